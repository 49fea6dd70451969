// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A web server with some files on loopback, on a thread of its own, that can fail in several ways.

#include <QMap>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QUrl>

class StreamServer : public QThread
{
public:
    enum Behaviour {
        Serve, // byte ranges too
        Refuse, // 404
        Die, // three quarters of the file, then nobody listens any more
        Stall // three quarters of the file, then silence
    };

    /// The files by their names.
    StreamServer(const QMap<QString, QByteArray> &files, Behaviour behaviour)
        : m_files(files)
        , m_behaviour(behaviour)
    {
        m_server.moveToThread(this);
        start();
        while (m_port == 0)
            msleep(1);
    }

    ~StreamServer() override
    {
        quit();
        wait();
    }

    QUrl url(const QString &name) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/%2").arg(m_port).arg(name));
    }

protected:
    void run() override
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                QObject::connect(socket, &QTcpSocket::readyRead, socket,
                                 [this, socket] { answer(socket); });
        });
        m_server.listen(QHostAddress::LocalHost);
        m_port = m_server.serverPort();
        exec();
        m_server.close();
        qDeleteAll(m_server.findChildren<QTcpSocket *>());
    }

private:
    void answer(QTcpSocket *socket)
    {
        const QByteArray request = socket->readAll();
        const QString name = QString::fromLatin1(request.split(' ').value(1).mid(1));
        if (m_behaviour == Refuse || !m_files.contains(name)) {
            socket->write(
                "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n"
                "Connection: close\r\n\r\n");
            socket->disconnectFromHost();
            return;
        }
        int first = 0;
        const int range = request.indexOf("Range: bytes=");
        if (range >= 0)
            first = request.mid(range + 13, request.indexOf('-', range) - range - 13).toInt();
        const QByteArray content = m_files.value(name);
        const int size = content.size();
        QByteArray reply = range >= 0 ? QByteArray("HTTP/1.1 206 Partial Content\r\n")
                                      : QByteArray("HTTP/1.1 200 OK\r\n");
        reply +=
            "Accept-Ranges: bytes\r\nContent-Type: application/octet-stream\r\n"
            "Content-Length: "
            + QByteArray::number(size - first) + "\r\n";
        if (range >= 0)
            reply += "Content-Range: bytes " + QByteArray::number(first) + '-'
                + QByteArray::number(size - 1) + '/' + QByteArray::number(size) + "\r\n";
        socket->write(reply + "\r\n");
        if (m_behaviour == Serve) {
            socket->write(content.mid(first));
            return;
        }
        socket->write(content.mid(first, qMax(0, size * 3 / 4 - first)));
        if (m_behaviour == Die) {
            m_server.close();
            socket->disconnectFromHost();
        }
    }

    QMap<QString, QByteArray> m_files;
    Behaviour m_behaviour;
    QTcpServer m_server;
    std::atomic<int> m_port{0};
};
