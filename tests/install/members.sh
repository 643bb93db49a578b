#!/usr/bin/env bash
# Members under one prefix: the loader takes the best one that the processor runs, and another one where
# it is told so. members.sh BUILDS COMPILER..., where $KEF_TEST_MEMBERS names those for wider vectors
# that ./run test has built, in order.
set -euo pipefail
builds=$1 compiler=("${@:2}") source=$(dirname "$0")
[ -n "${KEF_TEST_MEMBERS:-}" ] || exit 77
unset LD_LIBRARY_PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }

files() { (cd "$work/prefix" && find . ! -type d | sort); }
cmake --install "$builds/x86-64" --prefix "$work/prefix" >"$work/log"
files >"$work/generic"
package=$(find "$work/prefix" -name kef.pc)
libraries=$(dirname "$(dirname "$package")")
# A member brings its library, debug information apart, and nothing else.
for member in $KEF_TEST_MEMBERS; do
    cmake --install "$builds/$member" --prefix "$work/prefix" >"$work/log"
    file=$(basename "$(readlink -f "$libraries/libkef.so")")
    for name in ".debug/$file.debug" "$file" "${file%.*}"; do
        echo "./${libraries#"$work/prefix/"}/glibc-hwcaps/$member/$name"
    done >>"$work/generic"
done
files | diff <(sort "$work/generic") - || fail "not the files that were expected"

"${compiler[@]}" "$source/member.c" -o "$work/member" \
    $(PKG_CONFIG_PATH=$(dirname "$package") pkg-config --cflags --libs kef) -Wl,-rpath,"$libraries"
# Which member runs where the loader is to leave out what a feature is needed for.
expect() { # member setting...
    local got
    got=$(env LD_DEBUG=libs LD_DEBUG_OUTPUT="$work/loaded" "${@:2}" "$work/member")
    [ "$got" = "$1" ] || fail "$got runs instead of $1: ${*:2}"
}
best() { # member...: the last of them that was built, or none
    local member found=generic
    for member; do case " $KEF_TEST_MEMBERS " in *" $member "*) found=$member ;; esac; done
    echo $found
}
expect "$(best x86-64-v3 x86-64-v4)"
rm "$work"/loaded*
expect "$(best x86-64-v3)" GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F
expect generic GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2
grep -q 'calling init: .*libkef' "$work"/loaded* || fail "nothing is known of what was loaded"
grep 'hwcaps/x86-64-v4' "$work"/loaded* && fail "x86-64-v4 without AVX-512"
for member in $KEF_TEST_MEMBERS; do
    expect "$member" LD_LIBRARY_PATH="$libraries/glibc-hwcaps/$member"
done
