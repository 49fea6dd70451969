// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VideoMetadata.h"

#include "movparser/src/mov_file_reader.h"

#include <QFile>
#include <QFileInfo>
#include <QSize>
#include <QtEndian>

#include <string>

using Tavro::MovParserLib::MovFileReader;

namespace {

/// By the first atom, whose length and type are its first eight bytes.
bool isOfTheFamily(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    const QByteArray head = file.read(8);
    return head.size() == 8
        && MovFileReader::IsFirstAtom(qFromBigEndian<quint32>(head.constData() + 4));
}

} // namespace

QVariantMap VideoMetadata::read(const QString &path)
{
    MovFileReader reader;
    // A pipe would keep the reader waiting.
    if (!QFileInfo(path).isFile() || !isOfTheFamily(path) || reader.Open(path) != 0
        || !reader.HasVideo())
        return {};

    uint32_t width = 0;
    uint32_t height = 0;
    if (reader.GetFrameSize(&width, &height) != 0)
        width = height = 0;
    double frameRate = 0;
    if (reader.GetFrameRate(&frameRate) != 0)
        frameRate = 0;
    bool isTavroFile = false;
    if (reader.IsTavroFile(&isTavroFile) != 0)
        isTavroFile = false;
    float yaw = 0;
    float pitch = 0;
    float roll = 0;
    if (reader.GetInitialPose(&yaw, &pitch, &roll) != 0)
        yaw = pitch = roll = 0;
    uint32_t projection = Equirectangular;
    if (reader.GetProjection(&projection) != 0)
        projection = Equirectangular;
    uint32_t stereoMode = Mono;
    if (reader.GetStereoMode(&stereoMode) != 0)
        stereoMode = Mono;
    std::string writingTool;
    if (reader.GetWritingTool(&writingTool) != 0)
        writingTool.clear();

    return {{kTextureSize, QSize(int(width), int(height))},
            {QStringLiteral("Frame width"), width},
            {QStringLiteral("Frame height"), height},
            {QStringLiteral("Video frame rate"), frameRate},
            {QStringLiteral("Tavro file"), isTavroFile},
            {QStringLiteral("Initial yaw"), yaw},
            {QStringLiteral("Initial pitch"), pitch},
            {QStringLiteral("Initial roll"), roll},
            {kProjection, int(projection)},
            {kStereoscopy, int(stereoMode)},
            {QStringLiteral("Writing Tool"), QString::fromStdString(writingTool)}};
}
