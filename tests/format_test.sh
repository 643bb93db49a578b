#!/usr/bin/env bash
# Every C and C++ file as .clang-format has it; other versions of the formatter differ in details.
set -euo pipefail
clang-format --version 2>/dev/null | grep -q 'version 14\.' || exit 77
find bench command distributions examples fit include rng service stats tests tools vm \
    '(' -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.c' ')' -print0 |
    xargs -0 clang-format --dry-run --Werror
