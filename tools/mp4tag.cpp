// SPDX-License-Identifier: GPL-3.0-or-later
// tavro-mp4tag: a copy of a film that says that it is a panorama, and how it is to be shown.

#include "movparser/src/atom_proj.h"
#include "tools/CopyCheck.h"
#include "tools/MovieTagger.h"
#include "tools/OutputFile.h"
#include "tools/Printable.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

using namespace Tavro::MovParserLib;

namespace {
constexpr char kUsage[] =
    "Usage: tavro-mp4tag IN OUT [options]\n"
    "Writes a copy of the film IN with spherical and stereo metadata to OUT.\n"
    "\n"
    "  --projection equirectangular|cubemap\n"
    "  --stereo mono|left-right|top-bottom\n"
    "  --yaw D --pitch D --roll D   the orientation to begin with, in degrees;\n"
    "                               at most 180, 90 and 180 either way;\n"
    "                               angles that are not given are 0\n"
    "  --tool TEXT                  the program that made the film\n"
    "  --help                       this text\n"
    "\n"
    "OUT appears when it is complete and was read back. IN is never changed.\n";

constexpr int kYaw = 0;
constexpr int kPitch = 1;
constexpr int kRoll = 2;
constexpr int kProjection = 'p';
constexpr int kStereo = 's';
constexpr int kTool = 't';
constexpr int kHelp = 'h';

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only set such a flag");

extern "C" void onSignal(int)
{
    g_interrupted = true;
}

int complain(const QString &text)
{
    std::fprintf(stderr, "tavro-mp4tag: %s\n", qPrintable(printable(text)));
    return 1;
}

bool choose(const std::map<std::string, uint32_t> &choices, std::optional<uint32_t> *value)
{
    const auto found = choices.find(optarg);
    if (found != choices.end())
        *value = found->second;
    return found != choices.end();
}

bool parseAngle(float limit, float *degrees)
{
    char *end = nullptr;
    errno = 0;
    *degrees = std::strtof(optarg, &end);
    return end != optarg && *end == '\0' && errno == 0 && std::abs(*degrees) <= limit;
}

/// Takes one option; false when its value is no value.
bool takeOption(int option, MovieTags *tags)
{
    switch (option) {
    case kProjection:
        return choose(
            {{"equirectangular", kProjectionEquirectangular}, {"cubemap", kProjectionCubemap}},
            &tags->projection);
    case kStereo:
        return choose({{"mono", 0}, {"left-right", 1}, {"top-bottom", 2}}, &tags->stereoMode);
    case kTool:
        tags->tool = optarg;
        return !tags->tool->empty();
    default:
        if (!tags->pose)
            tags->pose.emplace();
        return parseAngle(option == kPitch ? 90.0f : 180.0f,
                          &(*tags->pose)[static_cast<size_t>(option - kYaw)]);
    }
}

bool isSameFile(int file, const QString &path)
{
    struct stat one = {};
    struct stat other = {};
    return fstat(file, &one) == 0 && stat(QFile::encodeName(path).constData(), &other) == 0
        && one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

int tag(const QString &in, const QString &out, const MovieTags &tags)
{
    // Opening a pipe would wait for its other end, and the copy takes the place of what stands
    // under its name, devices too.
    for (const QString &path : {in, out}) {
        const QFileInfo info(path);
        if (info.exists() && !info.isFile())
            return complain(path + QStringLiteral(": is not a file"));
    }
    QFile input(in);
    if (!input.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return complain(in + QStringLiteral(": ") + input.errorString());
    if (isSameFile(input.handle(), out))
        return complain(out + QStringLiteral(": is the file to be copied"));
    MovieTagger tagger;
    if (!tagger.read(input.handle()) || !tagger.apply(tags))
        return complain(in + QStringLiteral(": ") + tagger.errorString());
    if (!tagger.lost().isEmpty())
        complain(in + QStringLiteral(": not kept of its metadata: ")
                 + tagger.lost().join(QStringLiteral(", ")));
    if (tagger.hasMediaElsewhere())
        complain(in + QStringLiteral(": refers to media in other files, as its copy does"));
    OutputFile output(out, g_interrupted);
    const bool isWritten = output.open() && tagger.write(&output) && output.finish();
    if (!tagger.errorString().isEmpty())
        return complain(in + QStringLiteral(": ") + tagger.errorString());
    if (isWritten) {
        const QString fault = faultOfCopy(input.handle(), output.handle(), tags);
        if (!fault.isEmpty())
            return complain(out + QStringLiteral(": was not kept, because ") + fault);
    }
    if (!isWritten || !output.commit())
        return complain(out + QStringLiteral(": ") + output.errorString());
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    const option options[] = {{"projection", required_argument, nullptr, kProjection},
                              {"stereo", required_argument, nullptr, kStereo},
                              {"yaw", required_argument, nullptr, kYaw},
                              {"pitch", required_argument, nullptr, kPitch},
                              {"roll", required_argument, nullptr, kRoll},
                              {"tool", required_argument, nullptr, kTool},
                              {"help", no_argument, nullptr, kHelp},
                              {nullptr, 0, nullptr, 0}};
    MovieTags tags;
    for (int option = 0, index = 0;
         (option = getopt_long(argc, argv, "", options, &index)) != -1;) {
        if (option == kHelp) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (option == '?') {
            std::fputs(kUsage, stderr);
            return 1;
        }
        if (!takeOption(option, &tags))
            return complain(
                QStringLiteral("--%1 cannot be '%2'")
                    .arg(QLatin1String(options[index].name), QFile::decodeName(optarg)));
    }
    if (argc - optind != 2) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    struct sigaction action = {};
    action.sa_handler = onSignal;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
    // A file that may not grow any more is an error like a full disk.
    signal(SIGXFSZ, SIG_IGN);
    const QString in = QFile::decodeName(argv[optind]);
    try {
        return tag(in, QFile::decodeName(argv[optind + 1]), tags);
    } catch (const TooManyAtoms &error) {
        return complain(in + QStringLiteral(": ") + QLatin1String(error.what()));
    } catch (const std::bad_alloc &) {
        std::fputs("tavro-mp4tag: there is not enough memory\n", stderr);
        return 1;
    }
}
