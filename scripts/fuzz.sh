#!/bin/sh
# Builds the libFuzzer targets with clang and runs each (or the named ones) for a while.
#   scripts/fuzz.sh [SECONDS] [NAME ...]     e.g. scripts/fuzz.sh 60 selfml_fuzz
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-60}"
[ $# -gt 0 ] && shift
./scripts/build.sh fuzz
names="$*"
[ -n "$names" ] || names=$(ls build/fuzz/tests/fuzz/ | grep '_fuzz$')
for name in $names; do
    corpus="fuzz-corpus/$name"
    mkdir -p "$corpus"
    echo "== $name ($seconds s)" >&2
    "build/fuzz/tests/fuzz/$name" -max_total_time="$seconds" -print_final_stats=1 "$corpus" 2>&1 | tail -5
done
