// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Stands in for the interface's media loader and notes what the controller asks of it.

#include "tests/common/FakeApplication.h"

#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>

class RecordingLoader : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *mediaPlayer READ mediaPlayer CONSTANT)

public:
    /// One medium that was to be shown, or the message why none was.
    struct Medium
    {
        QUrl url;
        QString error;
        bool dragAndDrop = false;
    };

    Q_INVOKABLE void processFileSource(const QVariant &source, const QVariant &,
                                       const QVariant &error, const QVariant &dragAndDrop)
    {
        media.append({source.toUrl(), error.toString(), dragAndDrop.toBool()});
        if (onMedium)
            onMedium(source.toUrl());
    }

    Q_INVOKABLE void stop() { calls.append("stop"); }

    Q_INVOKABLE void play() { calls.append("play"); }

    Q_INVOKABLE void destroyVideoPlayer() { calls.append("destroyVideoPlayer"); }

    QObject *mediaPlayer() { return &player; }

    void setMetadata(const QVariantMap &map) { player.setProperty("fileMetadata", map); }

    std::function<void(const QUrl &)> onMedium;
    QList<Medium> media;
    QStringList calls;
    QObject player; // carries what was read about its medium
};

/// A controller that opens its media in a loader that only notes them.
class MediaApplication : public FakeApplication
{
    Q_OBJECT

public:
    MediaApplication()
    {
        makeObjects();
        controller->setMediaLoader(&loader);
        loader.player.setProperty("playerStatus", 6); // shows its medium
    }

    RecordingLoader loader;
};
