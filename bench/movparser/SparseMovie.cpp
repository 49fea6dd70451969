// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/movparser/SparseMovie.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace {
constexpr uint64_t kFileSize = uint64_t{8} << 30;
constexpr uint32_t kTimeScale = 60000;
constexpr uint32_t kFrameDuration = 1000;
constexpr uint32_t kSampleSize = 3000;
constexpr uint16_t kWidth = 3840;
constexpr uint16_t kHeight = 1920;

/// Atoms that are open one in another, written front to back.
class AtomWriter
{
public:
    void begin(const char *type)
    {
        m_open.push_back(m_bytes.size());
        number(0, 4);
        text(type);
    }

    void beginFull(const char *type)
    {
        begin(type);
        number(0, 4);
    }

    void end()
    {
        const size_t at = m_open.back();
        m_open.pop_back();
        const uint64_t size = m_bytes.size() - at;
        for (size_t i = 0; i < 4; ++i)
            m_bytes[at + i] = static_cast<uint8_t>(size >> (8 * (3 - i)));
    }

    void number(uint64_t value, unsigned bytes)
    {
        while (bytes-- > 0)
            m_bytes.push_back(static_cast<uint8_t>(value >> (8 * bytes)));
    }

    void text(const char *characters)
    {
        while (*characters)
            m_bytes.push_back(static_cast<uint8_t>(*characters++));
    }

    void raw(const std::vector<uint8_t> &bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }

    void zeros(size_t count) { m_bytes.insert(m_bytes.end(), count, 0); }

    size_t size() const { return m_bytes.size(); }

    std::vector<uint8_t> take() { return std::move(m_bytes); }

private:
    std::vector<uint8_t> m_bytes;
    std::vector<size_t> m_open;
};

/// The decoder configuration of a stream of this size, as an encoder wrote it.
const std::vector<uint8_t> kDecoderConfiguration = {
    0x01, 0x42, 0xc0, 0x34, 0xff, 0xe1, 0x00, 0x19, 0x67, 0x42, 0xc0, 0x34, 0xda, 0x00,
    0xf0, 0x03, 0xc6, 0xc0, 0x44, 0x00, 0x00, 0x03, 0x00, 0x04, 0x00, 0x00, 0x03, 0x01,
    0xe0, 0x3c, 0x60, 0xca, 0x80, 0x01, 0x00, 0x04, 0x68, 0xce, 0x0f, 0xc8};

void writeVideoDescription(AtomWriter *atoms)
{
    atoms->beginFull("stsd");
    atoms->number(1, 4);
    atoms->begin("avc1");
    atoms->zeros(6);
    atoms->number(1, 2);
    atoms->zeros(16);
    atoms->number(kWidth, 2);
    atoms->number(kHeight, 2);
    atoms->number(0x480000, 4);
    atoms->number(0x480000, 4);
    atoms->zeros(4);
    atoms->number(1, 2);
    atoms->zeros(32);
    atoms->number(24, 2);
    atoms->number(0xffff, 2);
    atoms->begin("avcC");
    atoms->raw(kDecoderConfiguration);
    atoms->end();
    atoms->end();
    atoms->end();
}

void writeMatrix(AtomWriter *atoms)
{
    for (const uint32_t value : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 0x40000000U})
        atoms->number(value, 4);
}

void writeAt(int file, uint64_t position, const std::vector<uint8_t> &bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = pwrite(file, bytes.data() + done, bytes.size() - done,
                                       static_cast<off_t>(position + done));
        if (written <= 0)
            throw std::runtime_error("cannot write the film");
        done += static_cast<size_t>(written);
    }
}
} // namespace

SparseMovie::SparseMovie(const std::string &folder, uint32_t samples)
    : m_samples(samples)
{
    std::string name = folder + "/sparse_movie_XXXXXX";
    m_file = mkstemp(name.data());
    if (m_file < 0)
        throw std::runtime_error("cannot make a file in " + folder);
    unlink(name.c_str());
    m_path = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(m_file);
    const std::vector<uint8_t> movie = makeMovie();
    AtomWriter head;
    head.begin("ftyp");
    head.text("isom");
    head.number(512, 4);
    head.text("isomiso2avc1mp41");
    head.end();
    m_movieSize = movie.size();
    m_moviePosition = kFileSize - m_movieSize;
    const uint64_t mediaPosition = head.size();
    m_topLevelPositions = {0, mediaPosition, m_moviePosition};
    head.number(1, 4);
    head.text("mdat");
    head.number(m_moviePosition - mediaPosition, 8);
    try {
        writeAt(m_file, 0, head.take());
        writeAt(m_file, m_moviePosition, movie);
    } catch (const std::runtime_error &) {
        close(m_file);
        throw;
    }
}

SparseMovie::~SparseMovie()
{
    close(m_file);
}

std::vector<uint8_t> SparseMovie::makeMovie()
{
    AtomWriter atoms;
    const auto table = [&](const char *type, unsigned numbersPerEntry, unsigned width,
                           auto &&entry) {
        atoms.beginFull(type);
        if (std::string(type) == "stsz")
            atoms.number(0, 4); // no size that all samples share
        atoms.number(m_samples, 4);
        m_tables.push_back({atoms.size(), uint64_t{m_samples} * numbersPerEntry, width});
        for (uint32_t i = 0; i < m_samples; ++i)
            entry(i);
        atoms.end();
    };
    const uint64_t duration = uint64_t{m_samples} * kFrameDuration;

    atoms.begin("moov");
    atoms.beginFull("mvhd");
    atoms.zeros(8);
    atoms.number(kTimeScale, 4);
    atoms.number(duration, 4);
    atoms.number(0x10000, 4);
    atoms.number(0x100, 2);
    atoms.zeros(10);
    writeMatrix(&atoms);
    atoms.zeros(24);
    atoms.number(2, 4);
    atoms.end();
    atoms.begin("trak");
    atoms.begin("tkhd");
    atoms.number(3, 4);
    atoms.zeros(8);
    atoms.number(1, 4);
    atoms.zeros(4);
    atoms.number(duration, 4);
    atoms.zeros(16);
    writeMatrix(&atoms);
    atoms.number(uint64_t{kWidth} << 16, 4);
    atoms.number(uint64_t{kHeight} << 16, 4);
    atoms.end();
    atoms.begin("mdia");
    atoms.beginFull("mdhd");
    atoms.zeros(8);
    atoms.number(kTimeScale, 4);
    atoms.number(duration, 4);
    atoms.number(0x55c4, 2);
    atoms.zeros(2);
    atoms.end();
    atoms.beginFull("hdlr");
    atoms.zeros(4);
    atoms.text("vide");
    atoms.zeros(12);
    atoms.text("VideoHandler");
    atoms.zeros(1);
    atoms.end();
    atoms.begin("minf");
    atoms.beginFull("vmhd");
    atoms.zeros(8);
    atoms.end();
    atoms.begin("dinf");
    atoms.beginFull("dref");
    atoms.number(1, 4);
    atoms.begin("url ");
    atoms.number(1, 4);
    atoms.end();
    atoms.end();
    atoms.end();
    atoms.begin("stbl");
    writeVideoDescription(&atoms);
    atoms.beginFull("stts");
    atoms.number(1, 4);
    atoms.number(m_samples, 4);
    atoms.number(kFrameDuration, 4);
    atoms.end();
    table("ctts", 2, 4, [&atoms](uint32_t i) {
        atoms.number(1, 4);
        atoms.number(i % 3 * kFrameDuration, 4);
    });
    atoms.beginFull("stsc");
    atoms.number(1, 4);
    for (int i = 0; i < 3; ++i)
        atoms.number(1, 4);
    atoms.end();
    table("stsz", 1, 4, [&atoms](uint32_t i) { atoms.number(kSampleSize - i % 7, 4); });
    table("co64", 1, 8, [&atoms](uint32_t i) { atoms.number(44 + uint64_t{i} * kSampleSize, 8); });
    for (int open = 0; open < 5; ++open) // stbl, minf, mdia, trak, moov
        atoms.end();
    return atoms.take();
}
