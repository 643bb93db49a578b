#!/usr/bin/env bash
# A library with vectors of two widths: no function of both that the linker would take for one.
# widths_test.sh SOURCE COMPILER
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

shared_names() { # source compiler option...: the inline functions, one copy of which a link keeps
    "$2" -std=gnu++20 -O0 -march=x86-64-v3 -ffp-contract=off -Wno-psabi -I. -Iinclude "${@:3}" -c "$1" -o "$work/object"
    nm "$work/object" | sed -nE 's/.* [WVu] (_ZN.*3kef.*)/\1/p' | sort
}
shared_names vm/real/pow.cpp "$2" >"$work/wide"
shared_names distributions/gamma.cpp "$2" -DKEF_VECTOR_BYTES=16 >"$work/one_block"
[ -s "$work/wide" ] && [ -s "$work/one_block" ]
if comm -12 "$work/wide" "$work/one_block" | grep . >"$work/both"; then
    echo "of both widths:"
    c++filt <"$work/both"
    exit 1
fi
