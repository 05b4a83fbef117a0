#!/bin/sh
# Whole-file highlighting against the peers users would pick instead, side by side in one run:
# Vellumex (`vx highlight --format ansi`), bat, highlight and source-highlight, each with its
# own grammars, each writing ANSI colours to a file. For every file of the corpus it prints each
# tool's median wall time, CPU time and peak memory (RSS) over RUNS runs (default 3), the fastest
# peer (by CPU time), and the ratio
# of the fastest peer's time to Vellumex's (above 1: Vellumex is faster), both for wall time and
# for CPU time (user + system): on a machine shared with other work, wall time mostly measures
# the scheduler, and the CPU ratio is the one to trust.
#
# A peer counts only where it did the work: its output must carry colour escapes, and the
# longest line must still be coloured after its first 16 KiB (bat leaves longer lines plain,
# source-highlight has no Markdown); others are shown with their reason and left out.
#
# The corpus comes from Debian and npm packages (installed here when missing; the npm ones into
# ${XDG_CACHE_HOME:-~/.cache}/vellumex-bench): C, C++, Python, 5 MB of the Python library,
# JavaScript (a 9 MB compiler, minified jQuery), CSS, HTML, JSON, Markdown, and a one-line file
# for start-up. After the table, Vellumex's peak memory on ever longer inputs: it must stay flat.
#   bench/highlight_peers.sh [FILE...]      (default: the corpus; builds vx first when needed)
# VX names the vx binary (default: build/release/src/app/vx); RUNS the runs per tool and file.
set -eu
cd "$(dirname "$0")/.."
vx="${VX:-build/release/src/app/vx}"
runs="${RUNS:-3}"
[ -x "$vx" ] || ./scripts/build.sh release

have() { command -v "$1" >/dev/null 2>&1; }
need=""
have bat || have batcat || need="$need bat"
have highlight || need="$need highlight"
have source-highlight || need="$need source-highlight"
have npm || need="$need npm"
[ -x /usr/bin/time ] || need="$need time"
[ -f /usr/include/sqlite3.h ] || need="$need libsqlite3-dev"
[ -f /usr/include/c++/12/bits/stl_algo.h ] || need="$need libstdc++-12-dev"
[ -f /usr/lib/python3.11/_pydecimal.py ] || need="$need libpython3.11-stdlib"
[ -f /usr/share/javascript/jquery/jquery.min.js ] || need="$need libjs-jquery"
[ -f /usr/share/doc/nodejs/api/fs.md ] || need="$need nodejs-doc"
if [ -n "$need" ]; then
    echo "installing:$need" >&2
    apt-get update -qq >/dev/null 2>&1 || true
    DEBIAN_FRONTEND=noninteractive flock /work/apt.lock apt-get install -y -qq --no-install-recommends $need >/dev/null 2>&1 ||
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $need >/dev/null
fi
bat=$(command -v bat || command -v batcat)

cache="${XDG_CACHE_HOME:-$HOME/.cache}/vellumex-bench"
npm_dir="$cache/npm/node_modules"
if [ ! -f "$npm_dir/typescript/lib/typescript.js" ] || [ ! -f "$npm_dir/bootstrap/dist/css/bootstrap.css" ]; then
    echo "installing npm packages typescript and bootstrap into $cache" >&2
    npm install --silent --no-audit --no-fund --prefix "$cache/npm" typescript@5 bootstrap@5 >/dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The corpus: files as packages ship them, and a few made from them.
mkdir -p "$work/corpus"
zcat /usr/share/doc/nodejs/api/fs.json.gz > "$work/corpus/fs.json"
for f in $(ls /usr/lib/python3.11/*.py | sort); do
    [ "$(stat -c %s "$work/corpus/stdlib.py" 2>/dev/null || echo 0)" -ge 5000000 ] && break
    cat "$f" >> "$work/corpus/stdlib.py"
done
printf 'int main(void) { return 0; }\n' > "$work/corpus/one-line.c"
if [ $# -gt 0 ]; then
    files="$*"
else
    files="/usr/include/sqlite3.h /usr/include/c++/12/bits/stl_algo.h /usr/lib/python3.11/_pydecimal.py
$work/corpus/stdlib.py $npm_dir/typescript/lib/typescript.js /usr/share/javascript/jquery/jquery.min.js
$npm_dir/bootstrap/dist/css/bootstrap.css /usr/share/doc/nodejs/api/fs.html $work/corpus/fs.json
/usr/share/doc/nodejs/api/fs.md $work/corpus/one-line.c"
fi

# One run of a tool on a file: "<wall seconds> <CPU seconds> <peak KB>", the output left in $work/out.
measure() {
    tool=$1 file=$2
    case $tool in
        vx) set -- "$vx" highlight "$file" --format ansi --colors 256 ;;
        bat) set -- "$bat" --color=always --paging=never --style=plain "$file" ;;
        highlight) set -- highlight -O ansi --force -i "$file" ;;
        source_highlight) set -- source-highlight --failsafe -f esc -i "$file" -o STDOUT ;;
        *) set -- sh -c "$tool" ;;  # a shell command line
    esac
    # CPU time to the microsecond from the run's own usage (time(1) rounds it to 10 ms); peak
    # memory from time(1), whose child is a fresh fork of a small program.
    python3 -c 'import os, sys
out = os.open(sys.argv[1], os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
command = ["/usr/bin/time", "-f", "%M", "-o", sys.argv[2]] + sys.argv[3:]
start = os.times().elapsed
pid = os.posix_spawnp(command[0], command, os.environ, file_actions=[
    (os.POSIX_SPAWN_DUP2, out, 1), (os.POSIX_SPAWN_OPEN, 2, "/dev/null", os.O_WRONLY, 0)])
_, _, usage = os.wait4(pid, 0)
wall = os.times().elapsed - start
print(f"{wall:.6f} {usage.ru_utime + usage.ru_stime:.6f} {open(sys.argv[2]).read().split()[-1]}")' \
        "$work/out" "$work/mem" "$@"
}

median() { sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# Why a peer's output does not count, or "ok": no colour at all, or the longest line plain
# after its first 16 KiB (more than a closing reset there).
coloured() {
    awk 'BEGIN { escapes = 0 }
         { escapes += gsub(/\033\[[0-9;]*[1-9][0-9;]*m/, "&") }
         length($0) > max { max = length($0); line = $0 }
         END { if (escapes == 0) { print "no-colour"; exit }
               if (max > 16384) { rest = substr(line, 16385); if (gsub(/\033\[/, "", rest) <= 2) { print "long-line-plain"; exit } }
               print "ok" }' "$work/out"
}

printf '%-14s %6s | %-8s %7s %7s %6s | %-16s %7s %7s %6s | %6s %6s\n' file KB vx wall cpu MB "fastest peer" wall cpu MB wall× cpu×
for file in $files; do
    size=$(stat -c %s "$file")
    name=$(basename "$file")
    best_tool="" best_cpu="" notes=""
    for tool in vx bat highlight source_highlight; do
        : > "$work/walls"; : > "$work/cpus"; : > "$work/mems"
        i=0
        while [ $i -lt "$runs" ]; do
            set -- $(measure "$tool" "$file")
            echo "$1" >> "$work/walls"; echo "$2" >> "$work/cpus"; echo "$3" >> "$work/mems"
            i=$((i + 1))
        done
        wall=$(median < "$work/walls") cpu=$(median < "$work/cpus")
        mem=$(echo "$(median < "$work/mems") / 1024" | bc -l)
        if [ "$tool" = vx ]; then
            vx_wall=$wall vx_cpu=$cpu vx_mem=$mem vx_ok=$(coloured)
            continue
        fi
        ok=$(coloured)
        notes="$notes $tool=$(printf '%.3f' "$wall")/$(printf '%.3f' "$cpu")s/$(printf '%.0f' "$mem")MB"
        if [ "$ok" != ok ]; then notes="$notes($ok)"; continue; fi
        if [ -z "$best_cpu" ] || [ "$(echo "$cpu < $best_cpu" | bc -l)" = 1 ]; then
            best_tool=$tool best_wall=$wall best_cpu=$cpu best_mem=$mem
        fi
    done
    [ "$vx_ok" = ok ] || name="$name($vx_ok)"
    if [ -n "$best_cpu" ]; then
        printf '%-14s %6.0f | %-8s %7.3f %7.3f %6.1f | %-16s %7.3f %7.3f %6.1f | %6.2f %6.2f\n' "$name" \
            "$(echo "$size / 1000" | bc -l)" vx "$vx_wall" "$vx_cpu" "$vx_mem" "$best_tool" "$best_wall" "$best_cpu" \
            "$best_mem" "$(echo "$best_wall / $vx_wall" | bc -l)" "$(echo "$best_cpu / $vx_cpu" | bc -l)"
    else
        printf '%-14s %6.0f | %-8s %7.3f %7.3f %6.1f | (no peer coloured it)\n' "$name" "$(echo "$size / 1000" | bc -l)" \
            vx "$vx_wall" "$vx_cpu" "$vx_mem"
    fi
    echo "    peers (wall/cpu/peak):$notes"
done

# Memory must not grow with the number of lines: the same C text repeated 1, 4 and 16 times.
echo
echo "vx peak memory as the input grows (sqlite3.h repeated k times, through a pipe):"
for k in 1 4 16; do
    i=0
    while [ $i -lt $k ]; do cat /usr/include/sqlite3.h; i=$((i + 1)); done > "$work/big.h"
    set -- $(measure "\"$vx\" highlight - --language c --format ansi < \"$work/big.h\"" -)
    printf '  k=%-3d %8.1f MB in  %6.2f s CPU  %6.1f MB peak\n' "$k" "$(echo "$(stat -c %s "$work/big.h") / 1000000" | bc -l)" "$2" \
        "$(echo "$3 / 1024" | bc -l)"
done
