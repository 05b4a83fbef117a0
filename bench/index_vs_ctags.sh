#!/bin/sh
# Indexing a tree of sources into a project symbol index (`vx index`: the indexer walks the tree,
# runs ctags over it and writes the database) against bare `ctags -R --output-format=json` into
# /dev/null (`-f -` to a discarded output) over the same tree, in one run. Target: at most 1.2 times ctags' time.
#   bench/index_vs_ctags.sh [DIR] [RUNS]      (default: /usr/include, best of 2)
set -eu
cd "$(dirname "$0")/.."
vx=build/release/src/app/vx
[ -x "$vx" ] || ./scripts/build.sh release
dir="${1:-/usr/include}"
runs="${2:-2}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "tree: $dir ($(find "$dir" -type f | wc -l) files)"

best() {
    best_ms=""
    i=0
    while [ "$i" -lt "$runs" ]; do
        i=$((i + 1))
        rm -f "$work"/index.vxindex*
        start=$(date +%s%N)
        "$@" > /dev/null
        end=$(date +%s%N)
        ms=$(( (end - start) / 1000000 ))
        if [ -z "$best_ms" ] || [ "$ms" -lt "$best_ms" ]; then best_ms=$ms; fi
    done
    echo "$best_ms"
}
ctags_ms=$(best ctags --options=NONE -R --output-format=json -f - "$dir" 2>/dev/null)
vx_ms=$(VX_HOME="$work" best "$vx" index "$dir" --db "$work/index.vxindex")
VX_HOME="$work" "$vx" index "$dir" --db "$work/index.vxindex"   # the unchanged tree again: nothing is re-read
start=$(date +%s%N); VX_HOME="$work" "$vx" index "$dir" --db "$work/index.vxindex" > /dev/null; end=$(date +%s%N)
echo "ctags -R --output-format=json: ${ctags_ms} ms"
echo "vx index (fresh index):        ${vx_ms} ms"
echo "vx index (nothing changed):    $(( (end - start) / 1000000 )) ms"
awk -v a="$vx_ms" -v b="$ctags_ms" 'BEGIN { printf "ratio vx/ctags: %.2f (target <= 1.2)\n", a / b }'
