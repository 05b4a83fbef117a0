#!/bin/sh
# Installs the Debian packages the build, the tests and the benchmarks need.
# Idempotent: asks apt only for what is missing and runs `apt-get update` only then.
set -eu

PACKAGES="
build-essential cmake ninja-build ccache pkg-config clang
libclang-rt-14-dev libfuzzer-14-dev
lemon re2c
libgtest-dev libgmock-dev libbenchmark-dev
libcli11-dev nlohmann-json3-dev libboost-dev libtbb-dev
libonig-dev libicu-dev libuchardet-dev libplist-dev
libsqlite3-dev zlib1g-dev libcurl4-openssl-dev libsimdjson-dev
tmux
universal-ctags
"

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done

if [ -n "$missing" ]; then
    echo "installing:$missing" >&2
    SUDO=""
    if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
    $SUDO apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends $missing >&2
fi
