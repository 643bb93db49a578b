#!/usr/bin/env bash
# Builds kef.dll with the MinGW cross compiler and checks what it exports and needs:
# windows_test.sh SOURCE LIBRARY. Ends with 77 where there is no such compiler.
set -euo pipefail
source=$1 library=$2
command -v i686-w64-mingw32-g++ >/dev/null || exit 77
cd "$source"
cmake --preset windows-i686 >/dev/null
cmake --build --preset windows-i686 >/dev/null
dll=build/windows-i686/kef.dll

# The same names as the shared library.
dump=$(i686-w64-mingw32-objdump -p "$dll")
names=$(sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[.*\] //p' <<<"$dump" | sort)
diff <(nm -D --defined-only "$library" | sed -n 's/^.* [^A] \([^@]*\)@.*/\1/p' | sort) - <<<"$names"

# Each cost table 12 bytes behind its dispatch table.
declare -A address
while read -r value _ name; do address[$name]=$((16#$value)); done \
    < <(i686-w64-mingw32-nm "$dll" | grep '_[tc]tab$')
for name in "${!address[@]}"; do
    [[ $name == *_ctab ]] || [ "${address[${name%ttab}ctab]}" = $((${address[$name]} + 12)) ] ||
        { echo "$name: no costs behind it"; exit 1; }
done
[ ${#address[@]} -gt 0 ]

# System libraries alone, and bare jumps through the tables.
diff <(sed -n 's/.*DLL Name: //p' <<<"$dump" | sort -f) - <<<"KERNEL32.dll
msvcrt.dll"
i686-w64-mingw32-objdump -d --no-show-raw-insn "$dll" | awk '
    /^[0-9a-f]+ <.*>:$/ { entry = $2 ~ /^<__vtm[sdcz]/ && $2 !~ /pack|Pack/; first = 1; next }
    entry && first && NF { first = 0; ++count; if ($2 != "jmp" || $3 !~ /^\*/) { print; bad = 1 } }
    END { exit bad || count == 0 }'
