#!/usr/bin/env bash
# Installs the library into a fresh directory, moves it, and builds and runs a program
# against it by pkg-config and by the CMake package: test.sh BUILD TOOLCHAIN COMPILER FLAGS...
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 toolchain=$2 compiler=("${@:3}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/log"
mv "$work/first" "$work/prefix"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name kef.pc)")
export PKG_CONFIG_PATH
"${compiler[@]}" -std=c99 -pedantic -Wall -Wextra -Werror "$here/consumer.c" -o "$work/consumer" \
    $(pkg-config --cflags --libs kef) -Wl,-rpath,"$(pkg-config --variable=libdir kef)"
"$work/consumer"

cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
    ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_FIND_PACKAGE_NO_SYSTEM_PACKAGE_REGISTRY=ON >>"$work/log"
cmake --build "$work/build" >>"$work/log" || { cat "$work/log"; exit 1; }
"$work/build/consumer"
