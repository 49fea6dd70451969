// SPDX-License-Identifier: GPL-3.0-or-later
// fuzz_seeds TARGET FOLDER: writes the files that a fuzzer begins with.

#include "tests/fuzz/sample_movie.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <string>

using namespace Tavro::MovParserLib;

namespace {
using Seeds = std::map<std::string, std::vector<uint8_t>>;

Seeds movieSeeds()
{
    MovieAtom cubemap = legacyMovie();
    static_cast<void>(cubemap.tracks.front().SetCubemap(0, 4));
    MovieAtom bare = legacyMovie();
    bare.tracks.front().spherical.reset();
    return {{"full", bytesOf(fullMovie())},
            {"legacy", bytesOf(legacyMovie())},
            {"cubemap", bytesOf(cubemap)},
            {"bare", bytesOf(bare)}};
}

/// A delimiter, a parameter set and a picture, twice, in the format that the first byte names or
/// leaves to be detected.
Seeds sampleSeeds()
{
    const std::vector<std::vector<uint8_t>> units = {
        {9, 0xf0}, {0x67, 1, 2}, {0x65, 3, 4, 5}, {9, 0xf0}, {0x41, 6, 7}};
    Seeds seeds;
    for (const uint8_t format : {0, 1, 2}) {
        std::vector<uint8_t> sample = {format};
        for (const auto &unit : units) {
            const bool codes = format != 2;
            sample.insert(sample.end(), {0, 0, 0, codes ? uint8_t(1) : uint8_t(unit.size())});
            sample.insert(sample.end(), unit.begin(), unit.end());
        }
        seeds[std::to_string(format)] = sample;
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
        file.write(reinterpret_cast<const char *>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        if (bytes.empty() || !file.flush()) {
            std::fprintf(stderr, "fuzz_seeds: cannot write %s\n", name.c_str());
            return 1;
        }
    }
    return 0;
}
