#!/usr/bin/env bash
# The DLL as it is installed: what it exports, needs and carries, and a program that is built against
# it: windows_test.sh BUILD COMPILER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 compiler=$2
tool=${compiler%gcc-posix}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }
cmake --install "$build" --prefix "$work" >/dev/null
dll=$work/bin/kef.dll
dump=$("${tool}objdump" -p "$dll")
sections=$("${tool}objdump" -h "$dll")

# The names that the headers declare.
for header in "$work"/include/kef_*.h; do
    [[ $header == *_functions.h ]] || echo "#include <${header##*/}>"
done >"$work/all.c"
declared=$("$compiler" -E -P "-DKEF_API=EXPORTED" -I"$work/include" "$work/all.c" | tr '\n' ' ' |
    grep -o 'EXPORTED[^;({[]*' | sed 's/ *$//; s/.*[ *]//' | sort)
exported=$(sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[.*\] //p' <<<"$dump" | sort)
diff <(echo "$declared") <(echo "$exported")
grep -q '^LIBRARY "kef.dll"' "$work/lib/kef.def"
diff <(echo "$exported") <(sed -nE 's/^ +([A-Za-z0-9_]+) @.*/\1/p' "$work/lib/kef.def" | sort)

# Each cost table 12 bytes behind its dispatch table, in 64 bits 24.
distance=12
grep -q 'pei-x86-64' <<<"$("${tool}objdump" -f "$dll")" && distance=24
declare -A address
while read -r value _ name; do address[${name#_}]=$((16#$value)); done \
    < <("${tool}nm" "$build/kef.dll" | grep ' _\?kef_vtm_kernel_[A-Za-z0-9]*_[tc]tab$')
for name in "${!address[@]}"; do
    [[ $name == *_ctab ]] || [ "${address[${name%ttab}ctab]}" = $((address[$name] + distance)) ] ||
        fail "$name: no costs behind it"
done
[ ${#address[@]} -gt 0 ] || fail "no tables"

# System libraries alone, and bare jumps through the tables; zPowx calls, with a copy of its arguments,
# and so do its slots' entries in 64 bits, where a complex number is handed over by its address.
copies='^<_?_vtmzPowx>' calls=1
[ $distance = 12 ] || copies='^<_vtmzPowx' calls=4
diff <(sed -n 's/.*DLL Name: //p' <<<"$dump" | sort -f) - <<<"KERNEL32.dll
msvcrt.dll"
"${tool}objdump" -d --no-show-raw-insn "$build/kef.dll" | awk -v named="$copies" -v expected=$calls '
    /^[0-9a-f]+ <.*>:$/ {
        copies = $2 ~ named
        entry = $2 ~ /^<_?_vtm[sdcz]/ && $2 !~ /pack|Pack/ && !copies
        first = 1
        next
    }
    copies && /\tcall/ { ++calls }
    entry && first && NF { first = 0; ++count; if ($0 !~ /\t(rex.W )?jmp +\*/) { print; bad = 1 } }
    END { exit bad || count == 0 || calls != expected }'

# Its version in words, and what a debugger reads in a file of its own.
"${tool}windres" -i "$dll" -O rc | grep -q 'FILEVERSION' || fail "no version resource"
grep -q '\.debug' <<<"$sections" && fail "debug sections"
"${tool}objdump" -h "$work/bin/.debug/kef.dll.debug" | grep -q '\.debug_line' || fail "no debug information"

version=$(sed -nE 's/^#define KEF_VERSION_[A-Z]+ ([0-9]+)$/\1/p' "$work/include/kef_version.h" | paste -sd.)

# A program by either import library, and run where Wine is.
for library in libkef.dll.a kef.lib; do
    "$compiler" -std=c99 -Wall -Wextra -Werror -I"$work/include" "$here/install/consumer.c" \
        "$work/lib/$library" -o "$work/bin/consumer.exe"
    ! command -v wine >/dev/null || (cd "$work/bin" && wine ./consumer.exe "$version") >/dev/null ||
        fail "the program with $library"
done

# The headers under a compiler with the other mark for imports.
if command -v clang >/dev/null; then
    for target in i686 x86_64; do
        clang --target=$target-pc-windows-msvc -ffreestanding -fsyntax-only -Werror -I"$work/include" "$work/all.c"
    done
fi
