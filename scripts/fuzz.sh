#!/bin/sh
# Builds the libFuzzer targets with clang and runs each (or the named ones) for a while.
#   scripts/fuzz.sh [SECONDS] [NAME ...]     e.g. scripts/fuzz.sh 60 selfml_fuzz
# A failing input is kept as fuzz-corpus/<name>/crash-... (reproduce it by running the target
# with that file); the script then says so and exits with status 1.
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-60}"
[ $# -gt 0 ] && shift
./scripts/build.sh fuzz
names="$*"
[ -n "$names" ] || names=$(ls build/fuzz/tests/fuzz/ | grep '_fuzz$')
failed=""
for name in $names; do
    corpus="fuzz-corpus/$name"
    mkdir -p "$corpus"
    echo "== $name ($seconds s)" >&2
    status=0
    "build/fuzz/tests/fuzz/$name" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$corpus/" \
        "$corpus" > "$corpus/last-run.log" 2>&1 || status=$?
    tail -5 "$corpus/last-run.log"
    if [ "$status" -ne 0 ]; then
        echo "!! $name FAILED (status $status); see $corpus/last-run.log and $corpus/crash-*" >&2
        failed="$failed $name"
    fi
done
[ -z "$failed" ] || { echo "failing fuzz targets:$failed" >&2; exit 1; }
