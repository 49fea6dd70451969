// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VxDropArea.h"

#include <QMimeData>

VxDropArea::VxDropArea(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemAcceptsDrops);
}

void VxDropArea::setFilePathList(const QList<QUrl> &list)
{
    // The lists share their data only when it is the very same list, not one with equal URLs.
    if (list.isSharedWith(m_filePathList))
        return;
    m_filePathList = list;
    Q_EMIT filePathListChanged();
}

void VxDropArea::dragEnterEvent(QDragEnterEvent *event)
{
    // An item that leaves this event alone never gets the drop.
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void VxDropArea::dragMoveEvent(QDragMoveEvent *event)
{
    // The answer to the last move decides whether the dragging program drops at all.
    event->acceptProposedAction();
}

void VxDropArea::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    event->acceptProposedAction();
    setFilePathList(urls);
}
