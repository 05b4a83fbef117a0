#!/bin/bash
# Compares the terminal editor with nvim, micro and kak, each measured the same way in one run,
# inside tmux (the editors need a terminal):
#   start    start to first painted screen on a 10 MB C file: launch, then poll the pane until the
#            file's first line shows (median of 3 runs; polling costs a few milliseconds)
#   keys     cost per keystroke at the end of a 100,000-line C file: go to the end, send a burst
#            of 400 keystrokes, wait until the last one shows; (elapsed / 400), median of 3
#   minified the same at the end of a 2 MB minified JavaScript file of one line (a burst of 100):
#            such a file is too heavy to highlight, and must type as fast as plain text
# Needs tmux; the peers are Debian packages (neovim, micro, kakoune) and are skipped when missing.
#   bench/editor.sh [path/to/vx]
set -u
cd "$(dirname "$0")/.."
VX="${1:-build/release/src/app/vx}"
[ -x "$VX" ] || { echo "build vx first (./scripts/build.sh release) or pass its path" >&2; exit 2; }
VX="$(realpath "$VX")"
work="$(mktemp -d)"
socket="vx-bench-$$"
# An editor that ignores the hang-up of its terminal (micro, busy on the 2 MB line) is killed by name.
trap 'tmux -L "$socket" kill-server 2>/dev/null; pkill -9 -f "$work/" 2>/dev/null; sleep 0.2; rm -rf "$work" 2>/dev/null' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" VX_HOME="$work/vxhome"
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$VX_HOME" "$work/micro"

# The corpus: a C function repeated with numbered names; its first line is a marker.
make_c() {  # lines
    awk -v n="$1" 'BEGIN {
        print "/* FIRSTLINEMARKER benchmark corpus */"
        for (i = 1; lines < n - 1; i++) {
            printf "static int count_%d(const char *s) {\n    int n = 0; /* words */\n", i
            printf "    for (; *s; ++s) if (*s == %c %c) n += 2 * %d;\n    return n + \"%d\"[0];\n}\n", 39, 39, i, i
            lines += 5
        }
    }' > "$2"
}
make_c 100000 "$work/lines.c"
# One line of 2 MB: minified JavaScript, the marker at its start.
awk 'BEGIN { printf "/*FIRSTLINEMARKER*/"; for (i = 1; i <= 56000; i++) printf "function f%d(a){return a*%d+\"s\"};", i, i; print "" }' > "$work/min.js"
make_c 360000 "$work/big.c"
echo "corpus: $(du -h "$work/big.c" | cut -f1) ($(wc -l < "$work/big.c") lines) and $(wc -l < "$work/lines.c") lines" >&2

now() { date +%s%N; }
pane() { tmux -L "$socket" capture-pane -p -t bench 2>/dev/null; }
wait_for() {  # text, limit in seconds
    local deadline=$(( $(now) + ${2:-30} * 1000000000 ))
    while [ "$(now)" -lt "$deadline" ]; do
        pane | grep -qF -- "$1" && return 0
        sleep 0.002
    done
    return 1
}
start_editor() {  # command...
    tmux -L "$socket" kill-server 2>/dev/null
    pkill -9 -f "$work/" 2>/dev/null
    # An editor killed with unsaved text keeps it and offers it at the next start: clear what the
    # last run kept, so that no question stands between the start and the text.
    sleep 0.3
    rm -rf "$VX_HOME/Recovery" "$work/micro/backups" "$HOME/.local/state/nvim/swap" 2>/dev/null
    tmux -L "$socket" -f /dev/null new-session -d -s bench -x 120 -y 40 "env TERM=tmux-256color COLORTERM=truecolor $*"
}
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

# name | command | keys to reach the end of the text ready to type | keys after typing to quit |
# keys to reach the end of the long line ready to type
editors=(
    "vx|$VX|C-End||C-Home End"
    "nvim|nvim --clean -n|G o||G A"
    "micro|micro -config-dir $work/micro|C-End||C-Home End"
    "kak|kak -n|g e o||g e a"
)

printf '%-8s %18s %22s %24s\n' editor "start 10 MB (ms)" "keystroke (ms/key)" "minified key (ms/key)"
for entry in "${editors[@]}"; do
    IFS='|' read -r name command goend _ golineend <<< "$entry"
    binary="${command%% *}"
    if ! command -v "$binary" >/dev/null 2>&1 && [ ! -x "$binary" ]; then
        printf '%-8s %18s %22s %24s\n' "$name" "(not installed)" "" ""
        continue
    fi
    starts=()
    for run in 1 2 3; do
        start_editor "$command $work/big.c"
        t0=$(now)
        if wait_for FIRSTLINEMARKER 20; then starts+=( $(( ($(now) - t0) / 1000000 )) ); fi
    done
    keys=()
    burst=$(printf 'x%.0s' $(seq 1 399))
    for run in 1 2 3; do
        start_editor "$command $work/lines.c"
        wait_for FIRSTLINEMARKER 20 || continue
        tmux -L "$socket" send-keys -t bench $goend
        sleep 0.5
        t0=$(now)
        tmux -L "$socket" send-keys -t bench -l "${burst}Q"
        if wait_for "xxxxQ" 20; then keys+=( $(( ($(now) - t0) / 1000 )) ); fi
    done
    minified=()
    short=$(printf 'x%.0s' $(seq 1 99))
    for run in 1 2 3; do
        start_editor "$command $work/min.js"
        wait_for FIRSTLINEMARKER 30 || continue
        tmux -L "$socket" send-keys -t bench $golineend
        sleep 1
        t0=$(now)
        tmux -L "$socket" send-keys -t bench -l "${short}Q"
        if wait_for "xxxxQ" 60; then minified+=( $(( ($(now) - t0) / 1000 )) ); fi
    done
    start_ms=$(printf '%s\n' "${starts[@]:-}" | median)
    key_us=$(printf '%s\n' "${keys[@]:-}" | median)
    key_ms=$(awk -v us="${key_us:-0}" 'BEGIN { printf "%.3f", us / 1000 / 400 }')
    min_us=$(printf '%s\n' "${minified[@]:-}" | median)
    min_ms=$(awk -v us="${min_us:-0}" 'BEGIN { printf "%.3f", us / 1000 / 100 }')
    printf '%-8s %18s %22s %24s\n' "$name" "${start_ms:-?}" "$key_ms" "$min_ms"
done
