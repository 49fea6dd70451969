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

/// A delimiter, a parameter set and a picture, twice, in the format that the first byte names.
Seeds sampleSeeds()
{
    const std::vector<std::vector<uint8_t>> units = {
        {9, 0xf0}, {0x67, 1, 2}, {0x65, 3, 4, 5}, {9, 0xf0}, {0x41, 6, 7}};
    std::vector<uint8_t> codes = {1};
    std::vector<uint8_t> lengths = {2};
    for (const auto &unit : units) {
        codes.insert(codes.end(), {0, 0, 0, 1});
        lengths.insert(lengths.end(), {0, 0, 0, static_cast<uint8_t>(unit.size())});
        codes.insert(codes.end(), unit.begin(), unit.end());
        lengths.insert(lengths.end(), unit.begin(), unit.end());
    }
    Seeds seeds = {{"codes", codes}, {"lengths", lengths}};
    codes.front() = lengths.front() = 0;
    seeds["codes_to_detect"] = codes;
    seeds["lengths_to_detect"] = lengths;
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
