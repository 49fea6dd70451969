// SPDX-License-Identifier: GPL-3.0-or-later
// fuzz_seeds TARGET FOLDER: writes the files that a fuzzer begins with.

#include "tests/fuzz/sample_movie.h"
#include "tests/movparser/box.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <string>

using namespace Tavro::MovParserLib;

namespace {
using Seeds = std::map<std::string, QByteArray>;

Seeds movieSeeds()
{
    MovieAtom cubemap = legacyMovie();
    static_cast<void>(cubemap.tracks.front().SetCubemap(0, 4));
    MovieAtom bare = legacyMovie();
    bare.tracks.front().spherical.reset();
    return {{"full", written(fullMovie())},
            {"legacy", written(legacyMovie())},
            {"cubemap", written(cubemap)},
            {"bare", written(bare)}};
}

/// A delimiter, a parameter set and a picture, twice, in the format that the first byte names or
/// leaves to be detected.
Seeds sampleSeeds()
{
    const QByteArray units[] = {"\x09\xf0", "\x67\1\2", "\x65\3\4\5", "\x09\xf0", "\x41\6\7"};
    Seeds seeds;
    for (int format = 0; format < 3; ++format) {
        QByteArray &sample = seeds[std::to_string(format)];
        sample.append(char(format));
        for (const QByteArray &unit : units)
            sample.append(Box::encode(format == 2 ? uint64_t(unit.size()) : 1, 4)).append(unit);
    }
    return seeds;
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: fuzz_seeds TARGET FOLDER\n", stderr);
        return 2;
    }
    const Seeds seeds = std::string(argv[1]) == "sample_pool" ? sampleSeeds() : movieSeeds();
    for (const auto &[name, bytes] : seeds) {
        std::ofstream file(std::string(argv[2]) + '/' + name, std::ios::binary);
        file.write(bytes.constData(), bytes.size());
        if (bytes.isEmpty() || !file.flush()) {
            std::fprintf(stderr, "fuzz_seeds: cannot write %s\n", name.c_str());
            return 1;
        }
    }
    return 0;
}
