#!/bin/sh
# Whole-file highlighting speed against peers, in one run on the same files: Vellumex
# (`vx highlight`), bat, highlight and pygmentize (Debian packages, installed here when missing).
# Prints MB/s per file and tool (best of three runs; every tool writes ANSI colours to a file),
# the ratio to the fastest peer, whether the longest line came out coloured past 16 KiB ("-" when
# no line is that long), and how Vellumex's time grows when one long line gets longer. A peer that
# leaves the long line uncoloured (bat does past 16 KiB) has not done the work, so the ratio is
# taken to the fastest peer that coloured it.
#   bench/highlight_peers.sh            (builds vx first when needed)
# VX names the vx binary (default: build/release/src/app/vx).
set -eu
cd "$(dirname "$0")/.."
vx="${VX:-build/release/src/app/vx}"
[ -x "$vx" ] || ./scripts/build.sh release

# Peers and corpus files, all from Debian packages.
have() { command -v "$1" >/dev/null 2>&1; }
need=""
have bat || have batcat || need="$need bat"
have highlight || need="$need highlight"
[ -x /usr/bin/pygmentize ] || need="$need python3-pygments"
[ -f /usr/include/sqlite3.h ] || need="$need libsqlite3-dev"
[ -f /usr/include/c++/12/bits/stl_algo.h ] || need="$need libstdc++-12-dev"
[ -f /usr/lib/python3.11/_pydecimal.py ] || need="$need libpython3.11-stdlib"
[ -f /usr/share/javascript/jquery/jquery.min.js ] || need="$need libjs-jquery"
if [ -n "$need" ]; then
    echo "installing:$need" >&2
    apt-get update -qq >/dev/null 2>&1 || true
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $need >/dev/null
fi
bat=$(command -v bat || command -v batcat)

files="/usr/include/sqlite3.h /usr/include/c++/12/bits/stl_algo.h /usr/lib/python3.11/_pydecimal.py
/usr/share/javascript/jquery/jquery.js /usr/share/javascript/jquery/jquery.min.js"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Seconds for the fastest of three runs of a command (output to a file in $work).
best_of_three() {
    best=""
    for _ in 1 2 3; do
        start=$(date +%s.%N)
        "$@" > "$work/out" 2>/dev/null || true
        end=$(date +%s.%N)
        t=$(echo "$end - $start" | bc -l)
        if [ -z "$best" ] || [ "$(echo "$t < $best" | bc -l)" = 1 ]; then best=$t; fi
    done
    echo "$best"
}

# Whether the output's longest line is coloured past its first 16 KiB (more than a closing reset
# there); "-" when no line is that long.
long_line_coloured() {
    awk 'length($0) > max { max = length($0); line = $0 }
         END { if (max <= 16384) { print "-"; exit }
               rest = substr(line, 16385); print (gsub(/\033\[/, "", rest) > 2 ? "yes" : "no") }' "$work/out"
}

run_vx() { "$vx" highlight "$1" --format ansi; }
run_bat() { "$bat" --color=always --paging=never --style=plain "$1"; }
run_highlight() { highlight -O ansi --force -i "$1"; }
run_pygmentize() { /usr/bin/pygmentize -f terminal256 "$1"; }

printf '%-16s %9s  %-10s %8s %8s %8s  %s\n' file KB tool seconds MB/s x-best long-line
for file in $files; do
    size=$(stat -c %s "$file")
    name=$(basename "$file")
    fastest_peer=""
    results=""
    for tool in vx bat highlight pygmentize; do
        t=$(best_of_three "run_$tool" "$file")
        rate=$(echo "$size / 1000000 / $t" | bc -l)
        coloured=$(long_line_coloured)
        if [ "$tool" != vx ] && [ "$coloured" != no ] && { [ -z "$fastest_peer" ] || [ "$(echo "$rate > $fastest_peer" | bc -l)" = 1 ]; }; then
            fastest_peer=$rate
        fi
        results="$results$tool $t $rate $coloured
"
    done
    echo "$results" | while read -r tool t rate coloured; do
        [ -n "$tool" ] || continue
        printf '%-16s %9.0f  %-10s %8.3f %8.2f %8.2f  %s\n' "$name" "$(echo "$size / 1000" | bc -l)" "$tool" "$t" "$rate" \
            "$(echo "$rate / $fastest_peer" | bc -l)" "$coloured"
    done
done

# One long line, longer and longer: the time per megabyte should stay flat.
line=$(tail -n 1 /usr/share/javascript/jquery/jquery.min.js)
echo
echo "vx on one minified line repeated k times (k x $(printf %s "$line" | wc -c) bytes):"
for k in 1 2 4 8; do
    : > "$work/long.js"
    i=0
    while [ $i -lt $k ]; do printf '%s' "$line" >> "$work/long.js"; i=$((i + 1)); done
    echo >> "$work/long.js"
    size=$(stat -c %s "$work/long.js")
    t=$(best_of_three run_vx "$work/long.js")
    printf '  k=%d  %8.0f KB  %7.3f s  %6.2f MB/s\n' "$k" "$(echo "$size / 1000" | bc -l)" "$t" "$(echo "$size / 1000000 / $t" | bc -l)"
done
