// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whole movies for tests, put together from boxes. A test changes what it is about and leaves the
// rest as it is: one second of video at 25 frames.

#include "box.h"

#include <QtCore/QList>

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
    /// A `stsz` or `stsd` among them stands in for the usual one.
    QList<Box> tables = {Box::full("stts").u32(1).u32(25).u32(1),
                         Box::full("stsc").u32(1).u32(1).u32(25).u32(1),
                         Box::full("stco").u32(1).u32(4096)};

    Box box() const
    {
        Box trak = Box("trak").child(header()).child(media());
        for (const Box &child : children)
            trak = std::move(trak).child(child);
        return trak;
    }

    Box header() const { return Box::full("tkhd").u64(0).u32(id).u32(0).u32(duration).zeros(60); }

    Box media() const
    {
        return Box("mdia")
            .child(Box::full("mdhd").u64(0).u32(timeScale).u32(duration).u32(0))
            .child(Box::full("hdlr").u32(0).raw(handler).zeros(12).raw(name).u8(0))
            .child(Box("minf").child(sampleTable()));
    }

    Box sampleTable() const
    {
        Box stbl = Box("stbl");
        if (!hasOwn("stsd"))
            stbl = std::move(stbl).child(descriptions());
        if (!hasOwn("stsz"))
            stbl = std::move(stbl).child(Box::full("stsz").u32(100).u32(samples));
        for (const Box &table : tables)
            stbl = std::move(stbl).child(table);
        return stbl;
    }

    bool hasOwn(const QByteArray &type) const
    {
        for (const Box &table : tables) {
            if (table.type() == type)
                return true;
        }
        return false;
    }

    Box descriptions() const
    {
        if (handler != "vide")
            return Box::full("stsd").u32(0);
        Box entry = Box("avc1").zeros(6).u16(1).zeros(16).u16(3840).u16(1920).zeros(46).u32(0);
        for (const Box &child : descriptionChildren)
            entry = std::move(entry).child(child);
        return Box::full("stsd").u32(1).child(entry);
    }
};

inline Box movieHeader()
{
    return Box::full("mvhd").u64(0).u32(600).u32(600).zeros(80);
}

inline Box movie(const QList<TestTrack> &tracks = {TestTrack()}, const QList<Box> &children = {})
{
    Box moov = Box("moov").child(movieHeader());
    for (const TestTrack &track : tracks)
        moov = std::move(moov).child(track.box());
    for (const Box &child : children)
        moov = std::move(moov).child(child);
    return moov;
}

inline QByteArray movieFile(const Box &moov)
{
    QByteArray bytes = Box("ftyp").raw("isom").u32(0).bytes();
    bytes.append(moov.bytes());
    // Reads are told by whole blocks: what follows must not decide a test.
    return bytes.append(Box("mdat").zeros(1024).bytes());
}
