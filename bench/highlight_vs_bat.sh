#!/bin/sh
# Whole-file highlighting for a terminal: `vx highlight --format ansi` against bat on the same
# file, in one run. Installs bat (Debian's package) when it is missing.
#   bench/highlight_vs_bat.sh [FILE]     (default: a generated 100,000-line C file)
set -eu
cd "$(dirname "$0")/.."
vx=build/release/src/app/vx
[ -x "$vx" ] || ./scripts/build.sh release
if ! command -v bat >/dev/null 2>&1 && ! command -v batcat >/dev/null 2>&1; then
    sudo_cmd=""; [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get install -y bat >/dev/null
fi
bat=$(command -v bat || command -v batcat)

file="${1:-}"
if [ -z "$file" ]; then
    file=$(mktemp --suffix=.c)
    trap 'rm -f "$file"' EXIT
    awk 'BEGIN { print "#include <stdio.h>\n"; for (i = 0; i < 14286; i++) {
        printf "// function %d: adds its arguments\nstatic int add%d(int a, int b) {\n", i, i
        printf "    const char *label = \"add%d\";\n    printf(\"%%s %%d\\n\", label, a + b * %d);\n", i, i
        printf "    return a + b; // done\n}\n\n" } }' > "$file"
fi
echo "file: $file ($(wc -l < "$file") lines, $(wc -c < "$file") bytes)"

# Best of three wall-clock runs, output thrown away (both write 24-bit colour escapes).
best() {
    best_ms=""
    for _ in 1 2 3; do
        start=$(date +%s%N)
        "$@" > /dev/null
        end=$(date +%s%N)
        ms=$(( (end - start) / 1000000 ))
        if [ -z "$best_ms" ] || [ "$ms" -lt "$best_ms" ]; then best_ms=$ms; fi
    done
    echo "$best_ms"
}
vx_ms=$(COLORTERM=truecolor best "$vx" highlight --format ansi "$file")
bat_ms=$(COLORTERM=truecolor best "$bat" --color=always --style=plain --paging=never --language=c "$file")
echo "vx highlight --format ansi: ${vx_ms} ms"
echo "bat --color=always:         ${bat_ms} ms"
