// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/mov_file_reader.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/report_error.h"

#include <QtCore/QString>

#include <cmath>

namespace Tavro::MovParserLib {

namespace {

constexpr uint32_t kVideo = FourCC("vide");

// Each atom of the top level costs a read of the file. Films have a few, long recordings in
// fragments some thousands, most of them behind the `moov`; a file of nothing but tiny atoms must
// not keep its reader busy.
constexpr int kMaxTopLevelAtoms = 1 << 15;

} // namespace

uint32_t MovFileReader::Report(MovAtom::Error error)
{
    return error == MovAtom::ERROR_OKAY ? 0 : ReportError(kAtomDomain, error);
}

uint32_t MovFileReader::InvalidArgument()
{
    return ReportError(kParserDomain, ERROR_INVALID_ARG);
}

uint32_t MovFileReader::NoTrack()
{
    return ReportError(kAtomDomain, MovAtom::ERROR_INVALID_RET_VAL);
}

template <class Act> uint32_t MovFileReader::Guarded(Act &&act)
{
    try {
        return act();
    } catch (const std::bad_alloc &) {
        return ReportError(kFileReaderDomain, FileReader::ERROR_GENERAL_ALLOC);
    }
}

bool MovFileReader::IsFirstAtom(uint32_t type)
{
    return type == FourCC("ftyp") || type == FourCC("moov") || type == FourCC("free")
        || type == FourCC("wide") || type == FourCC("mdat");
}

MovFileReader::~MovFileReader()
{
    reader.Close();
}

uint32_t MovFileReader::Open(const char *path)
{
    return Guarded([&] { return Open(QString::fromUtf8(path)); });
}

uint32_t MovFileReader::Open(const QString &path)
{
    static_cast<void>(reader.Close());
    movie = MovieAtom();
    moov_position = 0;
    const uint32_t error = Guarded([&] { return Parse(path); });
    if (error != 0)
        movie = MovieAtom(); // the tracks in front of a broken one must not answer
    return error;
}

uint32_t MovFileReader::Parse(const QString &path)
{
    const FileReader::Error opened = reader.Open(path);
    if (opened != FileReader::ERROR_OKAY)
        return ReportError(kFileReaderDomain, opened);
    uint64_t position = 0;
    uint64_t size = 0;
    if (LocateMovieAtom(&position, &size) != 0)
        return ERROR_MISSING_MOVIE_HEADER;
    if (size > kMaxMovieSize)
        return ReportError(kFileReaderDomain, FileReader::ERROR_BUFFER_ALLOC);
    // The sample tables stay where they were read to, so the block lives as long as they do.
    const auto buffer = std::make_shared<FileBuffer>();
    buffer->SetOwner(buffer);
    const FileReader::Error read =
        reader.Read(*buffer, static_cast<int64_t>(position), static_cast<int64_t>(size));
    if (read != FileReader::ERROR_OKAY)
        return ReportError(kFileReaderDomain, read);
    const MovAtom::Error parsed = movie.Read(*buffer);
    if (parsed != MovAtom::ERROR_OKAY)
        return ReportError(kAtomDomain, parsed);
    moov_position = position;
    return 0;
}

uint32_t MovFileReader::ReadAtomHeaderAt(uint64_t position, FileBuffer *buffer, AtomHeader *header)
{
    const FileReader::Error error = reader.Read(*buffer, static_cast<int64_t>(position), 16);
    if (error != FileReader::ERROR_OKAY)
        return error;
    uint32_t size32 = 0;
    uint64_t size64 = 0;
    if (ReadFields(*buffer, std::tie(size32, header->type, size64)) != MovAtom::ERROR_OKAY)
        return FileReader::ERROR_READ_FAILED;
    header->size = size32 == 1 ? size64 : size32;
    // No file ends behind what a signed position can say; a larger size must not wrap.
    if (header->size > static_cast<uint64_t>(INT64_MAX) - position)
        return FileReader::ERROR_ATTEMPT_TO_READ_PAST_EOF;
    header->end = position + header->size;
    return FileReader::ERROR_OKAY;
}

uint32_t MovFileReader::Locate(uint32_t type, uint64_t *position, uint64_t *size)
{
    FileBuffer buffer;
    uint64_t next = 0;
    for (int i = 0; i < kMaxTopLevelAtoms; ++i) {
        AtomHeader header;
        const uint32_t error = ReadAtomHeaderAt(next, &buffer, &header);
        if (error != FileReader::ERROR_OKAY)
            return ReportError(kParserDomain, error);
        if (header.end == next)
            return ReportError(kParserDomain, ERROR_MISSING_MOVIE_HEADER);
        // The only test of the file's kind.
        if (next == 0 && !IsFirstAtom(header.type))
            return ReportError(kParserDomain, ERROR_FILE_NOT_COMPATIBLE);
        if (header.type == type) {
            *position = next;
            *size = header.size;
            return 0;
        }
        next = header.end;
    }
    return ReportError(kParserDomain, ERROR_MISSING_MOVIE_HEADER);
}

uint32_t MovFileReader::LocateMovieAtom(uint64_t *position, uint64_t *size)
{
    return Locate(MovieAtom::kType, position, size);
}

uint32_t MovFileReader::LocateMediaData(uint64_t *position, uint64_t *size)
{
    return position && size ? Locate(FourCC("mdat"), position, size) : InvalidArgument();
}

bool MovFileReader::HasVideo() const
{
    return GetTrackCount(kVideo) > 0;
}

uint32_t MovFileReader::GetFrameSize(uint32_t *width, uint32_t *height) const
{
    return Ask(Find({}), &MediaInformationAtom::GetFrameSize, width, height);
}

uint32_t MovFileReader::GetFrameRate(double *rate) const
{
    if (!rate)
        return InvalidArgument();
    uint64_t frameDuration = 0;
    uint64_t timeScale = 0;
    const uint32_t error = GetFrameDuration(&frameDuration, &timeScale);
    if (error != 0)
        return error;
    if (frameDuration == 0 || timeScale == 0)
        return kFileReaderDomain;
    const double exact = static_cast<double>(timeScale) / static_cast<double>(frameDuration);
    *rate = std::round(exact * 1000) / 1000;
    return 0;
}

uint32_t MovFileReader::GetInitialPose(float *yaw, float *pitch, float *roll) const
{
    if (!yaw || !pitch || !roll)
        return InvalidArgument();
    const TrackAtom *track = movie.FindTrack(kVideo);
    return Report(track ? track->GetInitialPose(yaw, pitch, roll) : MovAtom::ERROR_MALFORMED_ATOM);
}

uint32_t MovFileReader::GetProjection(uint32_t *projection) const
{
    if (!projection)
        return InvalidArgument();
    const TrackAtom *track = movie.FindTrack(kVideo);
    return Report(track ? track->GetProjection(projection) : MovAtom::ERROR_MALFORMED_ATOM);
}

uint32_t MovFileReader::GetStereoMode(uint32_t *mode) const
{
    if (!mode)
        return InvalidArgument();
    const TrackAtom *track = movie.FindTrack(kVideo);
    return track ? Report(track->GetStereoMode(mode)) : NoTrack();
}

uint32_t MovFileReader::GetWritingTool(std::string *tool) const
{
    if (!tool)
        return InvalidArgument();
    tool->clear();
    uint32_t sourceCount = 0;
    const TrackAtom *track = movie.FindTrack(kVideo);
    return track ? Guarded([&] { return Report(track->GetWritingTool(tool, &sourceCount)); })
                 : NoTrack();
}

uint32_t MovFileReader::PrintRewritten()
{
    return Guarded([this] {
        MovieAtom copy;
        const uint32_t error = Rewrite(&copy);
        if (error == 0)
            copy.Print(0);
        return error;
    });
}

uint32_t MovFileReader::Rewrite(MovieAtom *copy)
{
    FileBuffer buffer;
    // A few bytes can ask for gigabytes of channels when they are written.
    const uint64_t size = movie.GetSize();
    if (size > kMaxMovieSize)
        return ReportError(kAtomDomain, MovAtom::ERROR_ATOM_WRITE_FAILED);
    const GenericBuffer::Error allocated = buffer.Alloc(size);
    if (allocated != GenericBuffer::ERROR_OKAY)
        return ReportError(kBufferDomain, allocated);
    const uint32_t error = Report(movie.Write(buffer));
    if (error != 0)
        return error;
    static_cast<void>(buffer.Seek(0, 0));
    return Report(copy->Read(buffer));
}

} // namespace Tavro::MovParserLib
