// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Decodes the picture of the command line while the program is still starting: decoding is most of
// the wait for the first panorama, and the scene and the graphics driver need the time as well.

#include <QQuickImageProvider>
#include <QString>
#include <QUrl>

#include <future>
#include <mutex>

/// Gives the interface's Image a picture that was decoded ahead, once. Made and asked for sources
/// on the main thread; the engine that it is added to owns it.
class PicturePrefetch : public QQuickImageProvider
{
public:
    /// The name under which an engine knows the provider.
    static const QString kName;

    /// Begins to decode the file \a path on a thread of its own, if it is a picture.
    explicit PicturePrefetch(const QString &path);
    ~PicturePrefetch() override;

    /// What an Image must load to show \a file: the prefetched picture the first time, afterwards,
    /// and for all other files, the file itself.
    QUrl source(const QUrl &file);

    /// On the interface's loading thread: the picture, no larger than \a requestedSize. Null if
    /// the file holds none.
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;

private:
    QString m_path;
    bool m_taken = false;
    std::mutex m_mutex; // guards m_picture
    std::future<QImage> m_picture;
};
