// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whole movies for tests, put together from boxes. A test changes what it is about and leaves the
// rest as it is: one second of video at 25 frames.

#include "box.h"

#include <QtCore/QList>
#include <QtCore/QTemporaryFile>

struct TestTrack
{
    QByteArray handler = "vide";
    QByteArray name = "Video";
    uint32_t id = 1;
    uint32_t timeScale = 25;
    uint32_t duration = 25;
    uint32_t samples = 25;
    QList<Box> descriptionChildren = {}; ///< Of the video sample description.
    QList<Box> children = {}; ///< Of the track, behind the mandatory ones.
    QList<Box> information = {}; ///< Of its `minf`, before the tables.
    /// A `stsz` or `stsd` among them stands in for the usual one.
    QList<Box> tables = {Box::full("stts").words({1, 25, 1}),
                         Box::full("stsc").words({1, 1, 25, 1}),
                         Box::full("stco").words({1, 4096})};

    Box box() const { return with(Box("trak").child(header()).child(media()), children); }

    Box header() const { return Box::full("tkhd").u64(0).words({id, 0, duration}).zeros(60); }

    Box media() const
    {
        return Box("mdia")
            .child(Box::full("mdhd").u64(0).words({timeScale, duration, 0}))
            .child(Box::full("hdlr").u32(0).raw(handler).zeros(12).raw(name).u8(0))
            .child(with(Box("minf"), information).child(sampleTable()));
    }

    Box sampleTable() const
    {
        QList<Box> all;
        if (!hasOwn("stsd"))
            all.append(descriptions());
        if (!hasOwn("stsz"))
            all.append(Box::full("stsz").words({100, samples}));
        return with(Box("stbl"), all + tables);
    }

    bool hasOwn(const QByteArray &type) const
    {
        return std::any_of(tables.cbegin(), tables.cend(),
                           [&type](const Box &table) { return table.type() == type; });
    }

    Box descriptions() const
    {
        if (handler != "vide")
            return Box::full("stsd").u32(0);
        const Box entry =
            Box("avc1").zeros(6).u16(1).zeros(16).shorts({3840, 1920}).zeros(46).u32(0);
        return Box::full("stsd").u32(1).child(with(entry, descriptionChildren));
    }

    static Box with(Box parent, const QList<Box> &children)
    {
        for (const Box &child : children)
            parent = std::move(parent).child(child);
        return parent;
    }
};

inline Box movie(const QList<TestTrack> &tracks = {TestTrack()}, const QList<Box> &children = {})
{
    Box moov = Box("moov").child(Box::full("mvhd").u64(0).words({600, 600}).zeros(80));
    for (const TestTrack &track : tracks)
        moov = std::move(moov).child(track.box());
    return TestTrack::with(moov, children);
}

inline QByteArray movieFile(const Box &moov)
{
    // Reads are told by whole blocks: what follows must not decide a test.
    QByteArray bytes = Box("ftyp").raw("isom").u32(0).bytes().append(moov.bytes());
    return bytes.append(Box("mdat").zeros(1024).bytes());
}

/// A file of these bytes while the object lives; who has opened it can read on afterwards.
class FileOf : public QTemporaryFile
{
public:
    explicit FileOf(const QByteArray &bytes)
    {
        if (!open() || write(bytes) != bytes.size())
            qFatal("no temporary file");
        close();
    }

    operator QString() const { return fileName(); }
};
