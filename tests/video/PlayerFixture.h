// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A player item in a real window, and a record of what it says and shows.

#include "video/VxVlcPlayerQml.h"

#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLFunctions_1_1>
#include <QQuickWindow>
#include <QtTest>

#include <mutex>

class PlayerFixture : public QObject
{
public:
    explicit PlayerFixture(bool shown = true)
    {
        window.resize(320, 240);
        makePlayer();
        if (shown)
            show();
    }

    ~PlayerFixture() override { delete player; }

    void makePlayer()
    {
        delete player;
        player = new VxVlcPlayerQml(window.contentItem());
        connect(player, &VxVlcPlayerQml::vlcStateChanged, this,
                [this](int state) { states.append(state); });
        connect(player, &VxVlcPlayerQml::errorStringChanged, this,
                [this](const QString &error) { errors.append(error); });
        connect(player, &VxVlcPlayerQml::positionChanged, this,
                [this](int position) { positions.append(position); });
        connect(player, &VxVlcPlayerQml::durationChanged, this,
                [this](int value) { duration = value; });
        connect(
            player, &VxVlcPlayerQml::frameDisplayed, this, [this] { capture(); },
            Qt::DirectConnection);
    }

    void show()
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    void forget()
    {
        states.clear();
        errors.clear();
        positions.clear();
        duration = -1;
        const std::lock_guard locker(m_mutex);
        m_frames = 0;
        m_first = m_last = QImage();
    }

    void open(const QUrl &url)
    {
        player->openFile(url);
        // Only now does the last medium show nothing any more; the new one's reports are queued.
        forget();
    }

    bool waitForState(int state, int timeout = 10000)
    {
        return QTest::qWaitFor([&] { return states.contains(state); }, timeout);
    }

    bool waitForFrames(int count, int timeout = 10000)
    {
        return QTest::qWaitFor([&] { return frames() >= count; }, timeout);
    }

    int frames() const
    {
        const std::lock_guard locker(m_mutex);
        return m_frames;
    }

    /// The first or last picture since forget(), red and blue in their places.
    QImage firstFrame() const
    {
        const std::lock_guard locker(m_mutex);
        return m_first;
    }

    QImage lastFrame() const
    {
        const std::lock_guard locker(m_mutex);
        return m_last;
    }

    /// The texture as the scene graph's own context has it.
    QImage sceneGraphTexture()
    {
        QImage image;
        std::atomic<bool> done{false};
        const auto connection = connect(
            &window, &QQuickWindow::beforeRendering, this,
            [&] {
                if (!done)
                    image = readTexture(GLuint(player->textureId()));
                done = true;
            },
            Qt::DirectConnection);
        window.update();
        const bool rendered = QTest::qWaitFor([&] { return done.load(); });
        disconnect(connection);
        return rendered ? image : QImage();
    }

    QQuickWindow window;
    VxVlcPlayerQml *player = nullptr;
    QVector<int> states;
    QStringList errors;
    QVector<int> positions;
    int duration = -1;

private:
    static QImage readTexture(GLuint texture)
    {
        auto *gl = QOpenGLContext::currentContext()->versionFunctions<QOpenGLFunctions_1_1>();
        gl->initializeOpenGLFunctions();
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        GLint width = 0;
        GLint height = 0;
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        QImage image(width, height, QImage::Format_RGBA8888);
        gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        return image.rgbSwapped();
    }

    // On the decoder's thread, its context current.
    void capture()
    {
        const QImage image = readTexture(GLuint(player->textureId()));
        const std::lock_guard locker(m_mutex);
        if (++m_frames == 1)
            m_first = image;
        m_last = image;
    }

    mutable std::mutex m_mutex;
    int m_frames = 0;
    QImage m_first;
    QImage m_last;
};
