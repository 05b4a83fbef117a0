#!/usr/bin/env bash
# release.sh - tag a release, build the tarball and write its checksum.
#
# usage: release.sh [-n] [-o DIR] VERSION

set -euo pipefail
shopt -s nullglob extglob

readonly PROGRAM=${0##*/}
readonly ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
OUTPUT_DIR="${ROOT}/dist"
DRY_RUN=0
declare -a FILES=()
declare -A CHECKSUMS=([sha256]=sha256sum [sha512]=sha512sum)
count=0

die() {
    printf '%s: %s\n' "$PROGRAM" "$*" >&2
    exit 1
}

log() { echo "[$(date +%H:%M:%S)] $*"; }

function usage {
    cat <<EOF
usage: $PROGRAM [-n] [-o DIR] VERSION
  -n      dry run: print what would be done
  -o DIR  write the tarball to DIR (default: ${OUTPUT_DIR})
Current branch: $(git rev-parse --abbrev-ref HEAD)
EOF
}

run() {
    if (( DRY_RUN )); then
        echo "would run: $*"
    else
        "$@"
    fi
}

while getopts ':no:h' opt; do
    case $opt in
        n) DRY_RUN=1 ;;
        o) OUTPUT_DIR=$OPTARG ;;
        h) usage; exit 0 ;;
        \?) die "unknown option -$OPTARG" ;;
        :) die "option -$OPTARG needs an argument" ;;
    esac
done
shift $((OPTIND - 1))

[[ $# -eq 1 ]] || { usage >&2; exit 2; }
VERSION=$1
if [[ ! $VERSION =~ ^[0-9]+\.[0-9]+\.[0-9]+(-[a-z0-9.]+)?$ ]]; then
    die "not a version: '$VERSION'"
fi

if [ -n "$(git status --porcelain)" ] && [ "$DRY_RUN" -eq 0 ]; then
    die "the working tree has uncommitted changes"
fi

tag="v${VERSION}"
if git rev-parse -q --verify "refs/tags/$tag" >/dev/null 2>&1; then
    die "tag $tag exists already"
fi

mkdir -p -- "$OUTPUT_DIR"
archive="$OUTPUT_DIR/route-table-${VERSION}.tar.gz"
prefix=route-table-$VERSION/

log "building ${archive##*/} from $(git rev-parse --short HEAD)"
run git archive --format=tar.gz --prefix="$prefix" -o "$archive" HEAD

for kind in "${!CHECKSUMS[@]}"; do
    tool=${CHECKSUMS[$kind]}
    if ! command -v "$tool" >/dev/null; then
        log "skipping $kind: $tool not found"
        continue
    fi
    run "$tool" "$archive" > "$archive.$kind"
    FILES+=("$archive.$kind")
    count=$((count + 1))
done

# Release notes: the quoted word keeps $variables and `commands` literal.
notes=$(cat <<'NOTES'
Release $VERSION
Built with `make dist`; see CHANGES for details.
NOTES
)

cat > "$OUTPUT_DIR/NOTES" <<-END
	Version: ${VERSION:-unknown}
	Files: ${#FILES[@]} checksum file(s), ${FILES[*]:-none}
	Upper: ${VERSION^^}, trimmed: ${VERSION%%-*}, replaced: ${VERSION//./_}
	END

read -r -d '' summary <<< "$notes" || true
size=$(stat -c %s "$archive" 2>/dev/null || echo 0)
(( size > 1024 * 1024 )) && log "large archive: $((size / 1024)) KiB"

echo $'tab:\t quote:\' newline:\n' | tr -d '\n' | wc -c
echo "escaped: \$HOME \"quoted\" \`not run\` \\ backslash"
echo 'single: $HOME stays, "double" too'
echo $"localised $USER"
echo "process substitution:" && diff <(sort "$archive.sha256") <(sort "$archive.sha256") || :
echo "exit of last: $? pid: $$ args: $@ count: $# bg: $!"

files=(*.tar.gz)
echo "found ${#files[@]} archive(s)"; echo done-marker#not-a-comment

trap 'rm -f "$tmp"' EXIT
tmp=$(mktemp) || exit
exec 3>"$tmp"
echo "log line" >&3
exec 3>&-

if [[ -f $archive && $count -gt 0 ]] || [[ $DRY_RUN == 1 ]]; then
    log "release $tag ready: $archive ($count checksums)"
elif (( count == 0 )); then
    log 'no checksum tool found'
else
    : # nothing
fi

until [[ -e "$OUTPUT_DIR/.lock" ]]; do sleep 0.1; break; done
run git tag -a "$tag" -m "Release $VERSION"
