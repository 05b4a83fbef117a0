#!/bin/sh
# Configures (once) and builds one build type into build/<type>.
#   scripts/build.sh [release|asan|tsan|fuzz] [extra cmake -D options...]
# VX_WERROR=1 in the environment turns warnings into errors.
set -eu
cd "$(dirname "$0")/.."
# Lets ccache share objects between checkouts in different folders.
export CCACHE_BASEDIR="$(pwd)"
type="${1:-release}"
[ $# -gt 0 ] && shift
dir="build/$type"
werror="-DVX_WERROR=${VX_WERROR:-0}"
case "$type" in
    release) opts="-DCMAKE_BUILD_TYPE=Release" ;;
    asan)    opts="-DCMAKE_BUILD_TYPE=Debug -DVX_SANITIZE=ON -DVX_BENCH=OFF" ;;
    tsan)    opts="-DCMAKE_BUILD_TYPE=Debug -DVX_TSAN=ON -DVX_BENCH=OFF" ;;
    fuzz)    opts="-DCMAKE_BUILD_TYPE=RelWithDebInfo -DVX_FUZZ=ON -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++" ;;
    *) echo "unknown build type: $type" >&2; exit 2 ;;
esac
if [ ! -f "$dir/build.ninja" ]; then
    cmake -S . -B "$dir" -G Ninja $opts $werror "$@" >&2
else
    cmake "$dir" $werror "$@" >/dev/null
fi
cmake --build "$dir" >&2
