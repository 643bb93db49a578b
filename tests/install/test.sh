#!/usr/bin/env bash
# Installs the library into a fresh directory, moves it, looks at what is there, and builds and
# runs a program against it by pkg-config and by the CMake package:
# test.sh BUILD TOOLCHAIN CXX-COMPILER COMPILER FLAGS...
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 toolchain=$2 cxx=("$3" "${@:5}") compiler=("${@:4}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }

cmake --install "$build" --prefix "$work/first" >"$work/log"
mv "$work/first" "$work/prefix"
package=$(find "$work/prefix" -name kef.pc)
libraries=$(dirname "$(dirname "$package")")
PKG_CONFIG_PATH=$(dirname "$package")
export PKG_CONFIG_PATH

# Each architecture has a place of its own.
architecture=$("${compiler[@]}" -print-multiarch)
[ "${libraries##*/}" = "${architecture:-${libraries##*/}}" ] || fail "in $libraries"
linked=$(grep -o '](docs/[^)#]*' "$work/prefix/share/doc/kef/README.md" | cut -c3-)
for document in README.md CHANGELOG.md docs/control.md $linked; do
    [ -s "$work/prefix/share/doc/kef/$document" ] || fail "no $document"
done

# Names and lines for a debugger stand beside the stripped library, and nothing says where it was built.
sections() { readelf -SW "$1"; }
if [ -e "$libraries/libkef.so" ]; then
    file=$(readlink -f "$libraries/libkef.so")
    debug=$libraries/.debug/${file##*/}.debug
    grep -q '\.symtab\|\.debug_line' <<<"$(sections "$file")" && fail "not stripped"
    grep -q '\.gnu_debuglink' <<<"$(sections "$file")" || fail "no link to its debug information"
    grep -q '\.debug_line' <<<"$(sections "$debug")" || fail "no debug information"
    grep -q '\.symtab' <<<"$(sections "$debug")" || fail "no symbols"
    grep -qF "$(dirname "$(dirname "$here")")/" "$file" "$debug" && fail "a path of the build machine"
fi

version=$(pkg-config --modversion kef)
if [ -e "$work/prefix/bin/kef" ]; then
    [ "$("$work/prefix/bin/kef" --version)" = "kef $version" ] || fail "the command is not that version"
    for file in man/man1/kef.1 bash-completion/completions/kef; do
        [ -s "$work/prefix/share/$file" ] || fail "no $file"
    done
fi
"${compiler[@]}" -std=c99 -pedantic -Wall -Wextra -Werror "$here/consumer.c" -o "$work/consumer" \
    $(pkg-config --cflags --libs kef) -Wl,-rpath,"$(pkg-config --variable=libdir kef)"
"$work/consumer" "$version"
for define in -DKEF_OTHER_FILE -UKEF_OTHER_FILE; do
    "${cxx[@]}" -std=c++20 -pedantic -Wall -Wextra -Werror -c $define "$here/consumer.cpp" \
        -o "$work/consumer$define.o" $(pkg-config --cflags kef)
done
"${cxx[@]}" "$work"/consumer-*.o -o "$work/consumer_cxx" $(pkg-config --libs kef) \
    -Wl,-rpath,"$(pkg-config --variable=libdir kef)"
"$work/consumer_cxx"

cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
    ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_FIND_PACKAGE_NO_SYSTEM_PACKAGE_REGISTRY=ON >>"$work/log"
cmake --build "$work/build" >>"$work/log" || { cat "$work/log"; exit 1; }
"$work/build/consumer" "$version"
"$work/build/consumer_cxx"

# A tool that reads the headers says itself what an export is.
for header in "$work"/prefix/include/kef_*.h; do
    [[ $header == *_functions.h ]] || echo "#include <${header##*/}>"
done >"$work/all.c"
"${compiler[@]}" -fsyntax-only -Werror -DKEF_API= $(pkg-config --cflags kef) "$work/all.c"
