#!/bin/sh
# install.sh - install route-table for the current user or system-wide.
# Written for POSIX sh with a few bash extensions where bash is available.

umask 022
PREFIX=${PREFIX:-/usr/local}
DESTDIR=${DESTDIR-}
VERBOSE=false
COMPONENTS="bin lib share/doc"
LOG=/tmp/install-$$.log

# Colours only on a terminal.
if [ -t 1 ] && command -v tput >/dev/null 2>&1; then
    BOLD=$(tput bold) RESET=$(tput sgr0)
else
    BOLD= RESET=
fi

say() { printf '%s==>%s %s\n' "$BOLD" "$RESET" "$*"; }
warn() { printf 'warning: %s\n' "$*" >&2; }
fail() { printf 'error: %s\n' "$*" >&2; exit "${2:-1}"; }

need() {
    for tool; do
        command -v "$tool" >/dev/null 2>&1 || fail "missing tool: $tool" 3
    done
}

usage() {
    cat <<-'USAGE'
	usage: install.sh [--prefix DIR] [--user] [--verbose] [--uninstall]
	  Variables: PREFIX (default /usr/local), DESTDIR (staging root).
	  Nothing here is expanded: $PREFIX stays as written.
	USAGE
}

while [ $# -gt 0 ]; do
    case "$1" in
        --prefix=*) PREFIX=${1#--prefix=} ;;
        --prefix) shift; PREFIX=$1 ;;
        --user) PREFIX="$HOME/.local" ;;
        -v|--verbose) VERBOSE=true ;;
        --uninstall) MODE=uninstall ;;
        -h|--help) usage; exit 0 ;;
        -*) fail "unknown option: $1" 2 ;;
        *) break ;;
    esac
    shift
done

need install sed
: "${MODE:=install}"

target() { echo "${DESTDIR}${PREFIX}/$1"; }

install_component() {
    component=$1
    src="./build/$component"
    [ -d "$src" ] || { warn "nothing to install for $component"; return 0; }
    dest=$(target "$component")
    $VERBOSE && say "installing $component into $dest"
    mkdir -p "$dest" &&
        find "$src" -type f | while IFS= read -r file; do
            rel=${file#"$src"/}
            mode=644
            case $rel in
                *.sh|bin/*) mode=755 ;;
                *.[ch]) continue ;;
            esac
            install -m "$mode" "$file" "$dest/$rel" 2>>"$LOG" || exit 1
        done
}

uninstall_component() {
    dest=$(target "$1")
    if [ -d "$dest" ]; then
        rm -rf -- "${dest:?}/route-table"* && say "removed $dest/route-table*"
    fi
}

count=0
for component in $COMPONENTS; do
    if [ "$MODE" = uninstall ]; then
        uninstall_component "$component"
    else
        install_component "$component" || fail "installing $component failed; see $LOG"
    fi
    count=$((count + 1))
done

if [ -n "${BASH_VERSION:-}" ]; then
    # bash only: arrays, [[ ]], here-strings and arithmetic for loops.
    declare -a sizes=()
    for ((i = 0; i < count; i++)); do sizes+=("$i"); done
    read -r first rest <<< "${sizes[*]}"
    [[ ${#sizes[@]} -ge 1 && $first == 0 ]] && say "components: ${#sizes[@]}"
    shopt -q extglob && files=( !(*.log) ) || files=()
    printf -v summary '%d file(s), last status %d' "${#files[@]}" $?
    say "$summary"
fi

trap 'rm -f "$LOG"' EXIT INT TERM
cat >"$(target share/doc)/INSTALLED" 2>/dev/null <<EOF || warn "could not write the record"
installed $(date -u +%Y-%m-%dT%H:%M:%SZ) by ${USER:-$(id -un)}
prefix: $PREFIX
components: $COMPONENTS (count: $count)
path check: \$PATH is "$PATH"
EOF

case ":$PATH:" in
    *":$PREFIX/bin:"*) ;;
    *) warn "$PREFIX/bin is not on your PATH; add: export PATH=\"$PREFIX/bin:\$PATH\"" ;;
esac
say "done ($MODE, $count component(s))"
exit 0
