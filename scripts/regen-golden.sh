#!/bin/sh
# Regenerates the expected highlighting of the language samples: for every file
# tests/data/syntax/<language>/<case>.<ext>, writes <case>.<ext>.scopes with
#     vx highlight --format scopes --language <language> <case>.<ext>
# Review the diff before committing it: a change there is a change users see.
#   scripts/regen-golden.sh [LANGUAGE ...]     (all languages when none is given)
# VX names the vx binary (default: build/release/src/app/vx).
set -eu
cd "$(dirname "$0")/.."
vx="${VX:-build/release/src/app/vx}"
if [ ! -x "$vx" ]; then
    echo "regen-golden: $vx is not built (run scripts/build.sh release)" >&2
    exit 1
fi
if [ $# -eq 0 ]; then
    set -- $(cd tests/data/syntax && ls -d */ | tr -d /)
fi
for language in "$@"; do
    dir="tests/data/syntax/$language"
    [ -d "$dir" ] || { echo "regen-golden: no samples for $language" >&2; exit 1; }
    for sample in "$dir"/*; do
        case "$sample" in *.scopes | *.scopes.new) continue ;; esac
        [ -f "$sample" ] || continue
        "$vx" highlight --format scopes --language "$language" "$sample" > "$sample.scopes.new"
        mv "$sample.scopes.new" "$sample.scopes"   # also replaces a .new left by a failed test
        echo "$sample.scopes"
    done
done
