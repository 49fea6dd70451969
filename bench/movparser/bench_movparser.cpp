// SPDX-License-Identifier: GPL-3.0-or-later
// bench_movparser [FOLDER]: what opening a film costs, as ratios within one run. The films are made
// in the folder (the current one by default) and removed again.

#include "bench/movparser/SparseMovie.h"
#include "movparser/src/mov_file_reader.h"

#include <QString>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>

using namespace Tavro::MovParserLib;

namespace {
constexpr int kRounds = 41;
constexpr int kProcessRounds = 5;

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// The number that `work` gives in a process of its own: the memory is fresh, as it is for the
/// first film of a program. Negative when it failed. What a program pays once, whatever it opens
/// (symbols bound on first use, the time zone), is paid by `warmUp` before.
double inChild(const std::function<double()> &warmUp, const std::function<double()> &work)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        const double result = warmUp() < 0 ? -1 : work();
        const bool sent = write(ends[1], &result, sizeof result) == sizeof result;
        _exit(sent ? 0 : 1);
    }
    close(ends[1]);
    double result = -1;
    if (child < 0 || read(ends[0], &result, sizeof result) != sizeof result)
        result = -1;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return result;
}

/// The shortest of several runs; the two are taken in turn so that both see the same machine.
struct Pair
{
    double ours = -1;
    double reference = -1;

    double ratio() const { return ours / reference; }
};

Pair race(int rounds, const std::function<double()> &ours, const std::function<double()> &reference)
{
    Pair best;
    const auto keep = [](double *kept, double value) {
        if (value >= 0 && (*kept < 0 || value < *kept))
            *kept = value;
    };
    for (int i = 0; i < rounds; ++i) {
        keep(&best.ours, ours());
        keep(&best.reference, reference());
    }
    return best;
}

/// Opens the film and asks the ten questions. False when one fails.
bool openAndAsk(MovFileReader *reader, const std::string &path)
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t number = 0;
    double rate = 0;
    bool isMaker = false;
    float pose[3] = {};
    std::string tool;
    return reader->Open(path) == 0 && reader->HasVideo()
        && reader->GetFrameSize(&width, &height) == 0 && reader->GetFrameRate(&rate) == 0
        && reader->IsTavroFile(&isMaker) == 0
        && reader->GetInitialPose(&pose[0], &pose[1], &pose[2]) == 0
        && reader->GetProjection(&number) == 0 && reader->GetStereoMode(&number) == 0
        && reader->GetWritingTool(&tool) == 0 && width == 3840 && rate == 60;
}

double timeToOpenAndAsk(const SparseMovie &movie)
{
    MovFileReader reader;
    const double start = secondsNow();
    const bool answered = openAndAsk(&reader, movie.path());
    return answered ? secondsNow() - start : -1;
}

uint64_t swapBytes(const uint8_t *at, unsigned width)
{
    if (width == 8) {
        uint64_t value = 0;
        std::memcpy(&value, at, sizeof value);
        return __builtin_bswap64(value);
    }
    uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap32(value);
}

/// The floor: the same bytes read once, every number of the tables swapped in place.
double timeToReadAndSwap(const SparseMovie &movie)
{
    const double start = secondsNow();
    const int file = open(movie.path().c_str(), O_RDONLY);
    const std::unique_ptr<uint8_t, decltype(&std::free)> memory(
        static_cast<uint8_t *>(std::malloc(movie.movieSize())), &std::free);
    uint64_t done = 0;
    while (done < movie.movieSize()) {
        const ssize_t got = pread(file, memory.get() + done, movie.movieSize() - done,
                                  static_cast<off_t>(movie.moviePosition() + done));
        if (got <= 0)
            return -1;
        done += static_cast<uint64_t>(got);
    }
    for (const EntryTable &table : movie.tables()) {
        uint8_t *at = memory.get() + table.position;
        for (uint64_t i = 0; i < table.count; ++i, at += table.width) {
            const uint64_t value = swapBytes(at, table.width);
            if (table.width == 8) {
                std::memcpy(at, &value, sizeof value);
            } else {
                const auto narrow = static_cast<uint32_t>(value);
                std::memcpy(at, &narrow, sizeof narrow);
            }
        }
    }
    const double seconds = secondsNow() - start;
    close(file);
    return seconds;
}

/// Bytes that this process has read from files so far, by the kernel's count.
uint64_t bytesReadSoFar()
{
    char text[512] = {};
    const int file = open("/proc/self/io", O_RDONLY);
    const ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    return length > 0 ? std::strtoull(text + std::strlen("rchar: "), nullptr, 10) : 0;
}

double bytesToOpenAndAsk(const SparseMovie &movie)
{
    const uint64_t first = bytesReadSoFar();
    const uint64_t second = bytesReadSoFar(); // the first look has counted itself
    MovFileReader reader;
    if (!openAndAsk(&reader, movie.path()))
        return -1;
    return static_cast<double>(bytesReadSoFar() - second - (second - first));
}

uint64_t wholeBlocks(uint64_t position, uint64_t length)
{
    constexpr uint64_t kBlock = 512;
    return (position % kBlock + length + kBlock - 1) / kBlock * kBlock;
}

uint64_t bytesNeeded(const SparseMovie &movie)
{
    constexpr uint64_t kHeader = 16;
    uint64_t bytes = wholeBlocks(movie.moviePosition(), movie.movieSize());
    for (const uint64_t position : movie.topLevelPositions())
        bytes += wholeBlocks(position, kHeader);
    return bytes;
}

/// A whole process from start to end, its output thrown away.
double timeOfProcess(std::vector<std::string> arguments)
{
    std::vector<char *> pointers;
    for (std::string &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    const double start = secondsNow();
    const int error =
        posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0 || waitpid(child, &status, 0) != child || status != 0)
        return -1;
    return secondsNow() - start;
}

double timeToWalk(const MovFileReader &reader, uint32_t samples)
{
    const double start = secondsNow();
    for (uint32_t i = 0; i < samples; ++i) {
        SampleInfo info;
        if (reader.GetSampleInfo(i, &info) != 0)
            return -1;
    }
    return secondsNow() - start;
}

void measure(const std::string &folder, const char *name, uint32_t samples, bool walk)
{
    const SparseMovie tiny(folder, 1);
    const SparseMovie movie(folder, samples);
    std::printf("%s, moov of %.1f MB\n", name, static_cast<double>(movie.movieSize()) / 1e6);
    const double bytes = inChild([&tiny] { return timeToOpenAndAsk(tiny); },
                                 [&movie] { return bytesToOpenAndAsk(movie); });
    std::printf("  bytes read            %.0f, needed %.0f\n", bytes,
                static_cast<double>(bytesNeeded(movie)));
    const Pair opening = race(
        kRounds,
        [&] {
            return inChild([&tiny] { return timeToOpenAndAsk(tiny); },
                           [&movie] { return timeToOpenAndAsk(movie); });
        },
        [&] {
            return inChild([&tiny] { return timeToReadAndSwap(tiny); },
                           [&movie] { return timeToReadAndSwap(movie); });
        });
    std::printf("  open and ask          %.2f ms, floor %.2f ms, ratio %.2f\n", opening.ours * 1e3,
                opening.reference * 1e3, opening.ratio());
    const Pair process = race(
        kRounds / 2,
        [&movie] {
            return timeOfProcess({TAVRO_MP4INFO, movie.path()});
        },
        [&movie] {
            return timeOfProcess({"ffprobe", "-v", "error", "-show_streams", movie.path()});
        });
    std::printf("  tavro-mp4info         %.1f ms, ffprobe %.1f ms, ratio %.3f\n",
                process.ours * 1e3, process.reference * 1e3, process.ratio());
    if (!walk)
        return;
    MovFileReader reader;
    if (reader.Open(movie.path()) != 0)
        return;
    const Pair walks = race(
        9, [&reader, samples] { return timeToWalk(reader, samples); },
        [&reader, samples] { return timeToWalk(reader, samples / 2); });
    std::printf("  walk over all samples %.1f ms, over half of them %.1f ms, ratio %.2f\n",
                walks.ours * 1e3, walks.reference * 1e3, walks.ratio());
}
} // namespace

int main(int argc, char **argv)
{
    constexpr uint32_t kRate = 60;
    const std::string folder = argc > 1 ? argv[1] : ".";
    try {
        measure(folder, "333 s", 333 * kRate, false);
        measure(folder, "2 h", 2 * 3600 * kRate, false);
        measure(folder, "10 h", 10 * 3600 * kRate, true);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_movparser: %s\n", error.what());
        return 1;
    }
    return 0;
}
