// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The item that catches files dropped on the window.

#include <QList>
#include <QQuickItem>
#include <QUrl>

/// Accepts drops that carry URLs and hands their list to the interface.
class VxDropArea : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(
        QList<QUrl> filePathList READ filePathList WRITE setFilePathList NOTIFY filePathListChanged)

public:
    explicit VxDropArea(QQuickItem *parent = nullptr);

    QList<QUrl> filePathList() const { return m_filePathList; }

    void setFilePathList(const QList<QUrl> &list);

Q_SIGNALS:
    /// Emitted for every drop, also of the same files once more: dropping a file again opens it
    /// again.
    void filePathListChanged();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QList<QUrl> m_filePathList;
};
