#!/bin/sh
# Whether PROGRAM, made of the C block of DOCUMENT, prints what the document says:
# the first plain block behind the C block. Blanks at line ends do not count.
# Usage: documented_example.sh PROGRAM DOCUMENT
unset KEF_VTM_MODE
expected=$(awk '/^```c$/ { seen = 1 } !seen { next }
                /^```$/ { if (printing) exit; if (ended) printing = 1; ended = 1; next }
                printing' "$2" | sed 's/ *$//')
got=$("$1" | sed 's/ *$//')
[ -n "$expected" ] && [ "$got" = "$expected" ] && exit
printf 'expected, from %s:\n%s\ngot:\n%s\n' "$2" "$expected" "$got"
exit 1
