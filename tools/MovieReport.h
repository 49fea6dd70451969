// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What a player takes from a film, asked through the same questions that the player asks.

#include "movparser/src/mov_file_reader.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <array>
#include <string>

/// A getter's output, or the number with which it failed.
template <class T> struct Answer
{
    uint32_t error = 0;
    T value = {};
};

/// Opens one file and keeps the answers.
class MovieReport
{
public:
    explicit MovieReport(const QString &path);

    bool opened() const { return m_open == 0; }

    /// The answers as one object; after a failed opening only the file and the failure.
    QJsonObject toJson() const;

    /// The answers as lines, each with where it comes from.
    QString toText() const;

    /// The library's own dump of the atom tree, made safe for a terminal.
    std::string treeToText() const;

private:
    QString makerReason() const;
    /// Where the answers come from that one of the newer atoms may give.
    QString sphericalReason(const char *atom) const;
    QStringList notConsulted() const;

    QString m_path;
    Tavro::MovParserLib::MovFileReader m_reader;
    uint32_t m_open = 0;
    bool m_hasVideo = false;
    Answer<std::array<uint32_t, 2>> m_frameSize;
    Answer<double> m_frameRate;
    Answer<bool> m_isMakerFile;
    Answer<std::array<float, 3>> m_pose;
    Answer<uint32_t> m_projection;
    Answer<uint32_t> m_stereoMode;
    Answer<std::string> m_writingTool;
};
