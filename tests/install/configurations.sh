#!/usr/bin/env bash
# What a configuration says and takes: configurations.sh SOURCE LIBRARY TOOLCHAIN PROCESSOR
set -euo pipefail
source=$1 library=$2 toolchain=$3 processor=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }
configure() { # directory option...
    cmake -S "$source" -B "$work/$1" -G Ninja ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} "${@:2}" \
        >"$work/log" 2>&1
}

# The compiler of another processor is refused in words, which CMake breaks into lines.
other=$([ "$processor" = i386 ] && echo x86-64 || echo i386)
configure other -DKEF_TARGET=$other && fail "$processor taken for $other"
grep -q "compiles for $processor" <<<"$(tr -s ' \n' ' ' <"$work/log")" || fail "refused without a reason"

# The user's flags of the build type count, and an absolute directory is not put behind the prefix.
configure own -DKEF_TARGET=$processor -DCMAKE_CXX_FLAGS_RELEASE="-O1 -flto" \
    -DCMAKE_INSTALL_LIBDIR=/somewhere/lib -DCMAKE_INSTALL_PREFIX=/elsewhere || { cat "$work/log"; exit 1; }
cd "$work/own"
commands=$(ninja -t commands libkef.so)
grep -q -- '-O1 -flto' <<<"$commands" || fail "the flags are not used"
grep -q -- '-O2' <<<"$commands" && fail "the flags are overridden"
variable() { PKG_CONFIG_PATH=$work/own pkg-config --variable="$1" kef; }
[ "$(variable libdir) $(variable includedir)" = "/somewhere/lib /elsewhere/include" ] || fail "$(cat kef.pc)"
# A relative one is, at the second configuration too.
for time in 1 2; do
    configure relative -DKEF_TARGET=$processor -DCMAKE_INSTALL_LIBDIR=lib/there || { cat "$work/log"; exit 1; }
    grep -qxF 'libdir=${prefix}/lib/there' "$work/relative/kef.pc" || fail "$(cat "$work/relative/kef.pc")"
done

# With link-time optimisation every name of the vector-math surface is exported. The surface alone,
# without its kernels; each function in a part of its own, as in a link of many files.
ninja CMakeFiles/kef.dir/vm/surface/entries.cpp.o >"$work/log"
link=$(grep -o -- '/[^ ]* -fPIC .* -shared ' <<<"$commands")
$link -flto-partition=max -Wl,--unresolved-symbols=ignore-all -o surface.so CMakeFiles/kef.dir/vm/surface/entries.cpp.o
exported() { nm -D --defined-only "$1" | sed 's/.* //; s/@.*//' | grep '^_vtm[sdcz][A-Z]\|_[tc]tab$' | sort; }
diff <(exported "$library") <(exported surface.so)
