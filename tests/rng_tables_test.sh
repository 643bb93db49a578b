#!/usr/bin/env bash
# Makes the generated tables of the random streams again, those that take seconds, and the
# reference outputs, and compares them with those that stand.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tables=rng/brng/tables
tools/sobol_numbers.py | cmp - $tables/sobol.inc
tools/rng_reference.py | cmp - tests/data/rng_reference.txt
"${CXX:-c++}" -std=c++20 -O2 -o "$work/jump_polynomials" tools/jump_polynomials.cpp
for generator in mt19937 sfmt19937; do
    "$work/jump_polynomials" $generator 2>/dev/null | cmp - $tables/${generator}_jump.inc
done
"$work/jump_polynomials" powers 2>/dev/null | cmp - $tables/sfmt19937_powers.inc
