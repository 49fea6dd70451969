// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Decodes the picture of the command line while the program is still starting: decoding is most of
// the wait for the first panorama, and the scene and the graphics driver need the time as well.

#include <QQuickImageProvider>
#include <QString>
#include <QUrl>

#include <memory>

/// Gives the interface's Image a picture that was decoded ahead, once. Made and asked for sources
/// on the main thread, made even before the application object; the engine that it is added to
/// owns it.
class PicturePrefetch : public QQuickImageProvider
{
public:
    /// The name under which an engine knows the provider.
    static const QString kName;

    /// Begins with \a file, an absolute path or a URL; null if it is none that can be decoded
    /// ahead.
    static std::unique_ptr<PicturePrefetch> begin(const QString &file);
    /// Begins to decode the file \a path on a thread of its own, if it is a picture.
    explicit PicturePrefetch(const QString &path);
    /// Does not wait for a file that does not answer.
    ~PicturePrefetch() override;

    /// Tells that the application object is made. Before that the thread must not touch Qt's image
    /// plug-ins, whose paths the application object sets: it decodes plain JPEG files only, and
    /// waits with all else.
    void continueWithPlugins();

    /// What an Image must load to show \a file: the prefetched picture the first time, afterwards,
    /// and for all other files, the file itself.
    QUrl source(const QUrl &file);

    /// On the interface's loading thread: the picture, no larger than \a requestedSize. Null if
    /// the file holds none.
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;

private:
    struct Decoding;

    QString m_path;
    bool m_taken = false;
    std::shared_ptr<Decoding> m_decoding; // with its thread
};
