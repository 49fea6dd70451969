#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fuzzes the MP4/MOV library: tools/fuzz.sh SECONDS TARGET
# TARGET is movie_read, movie_roundtrip or sample_pool. Builds the target with clang under the address
# and undefined behaviour sanitizers, lets the library's own writer make the seed corpus, and runs.
# What is found interesting stays in build/fuzz/corpus, what fails in build/fuzz/findings. Exits with
# 77 where clang is missing.
set -euo pipefail

usage() {
    echo "usage: tools/fuzz.sh SECONDS movie_read|movie_roundtrip|sample_pool" >&2
    exit 2
}

[[ $# -eq 2 && $1 =~ ^[1-9][0-9]*$ ]] || usage
seconds=$1
target=$2
[[ $target =~ ^(movie_read|movie_roundtrip|sample_pool)$ ]] || usage

command -v clang++ >/dev/null || {
    echo "clang++ is missing: install clang and libclang-rt-14-dev" >&2
    exit 77
}

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/fuzz
mkdir -p "$build"
# Several runs may start at once; one of them builds.
(
    flock 9
    [[ -f $build/build.ninja ]] || cmake -S "$root" -B "$build" -G Ninja \
        -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRO_BUILD_FUZZERS=ON \
        -DTAVRO_BUILD_TESTS=OFF -DTAVRO_SANITIZE=fuzzer-no-link,address,undefined >"$build/configure.log"
    cmake --build "$build" --target "fuzz_$target" fuzz_seeds >"$build/build.log" || {
        cat "$build/build.log" >&2
        exit 1
    }
) 9>"$build/lock"

corpus=$build/corpus/$target
findings=$build/findings/$target
seeds=$build/seeds/$target
mkdir -p "$corpus" "$findings" "$seeds"
"$build/bin/fuzz_seeds" "$target" "$seeds"

# A megabyte of input must never take seconds: the limit is a finding too.
exec "$build/bin/fuzz_$target" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 \
    -max_len=16384 -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" "$seeds"
