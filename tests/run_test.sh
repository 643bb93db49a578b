#!/usr/bin/env bash
# ./run demo before and around the build, with stand-ins for the tools that build and for the front
# end: wrong words are refused before anything happens, files are those of the caller's directory, and
# a build is quiet unless it fails. Usage: run_test.sh SOURCE
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

mkdir -p "$work/tree/examples" "$work/bin" "$work/elsewhere"
cp "$source/run" "$work/tree"
cp "$source"/examples/*.def "$work/tree/examples"
echo 1 >"$work/elsewhere/data file"
tool() { # name text
    printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}
tool dpkg-query 'echo "install ok installed"'
tool frontend 'for word; do echo "<$word>"; done'
tool cmake 'case $* in
    --build*) mkdir -p build/i386/examples; cp "$(dirname "$0")/frontend" build/i386/examples ;;
esac
echo "[1/2] many words"'
export PATH=$work/bin:$PATH

# expect STATUS WORDS ARGUMENT...: ./run demo from another directory.
expect() {
    local status=$1 words=$2 got=0
    shift 2
    rm -rf "$work/tree/build"
    (cd "$work/elsewhere" && "$work/tree/run" demo "$@") >"$work/output" 2>&1 || got=$?
    if [ $got != "$status" ] || ! grep -qF -e "$words" "$work/output"; then
        echo "./run demo $*: status $got, expected $status; expected the words: $words; output:"
        cat "$work/output"
        failures=$((failures + 1))
    fi
}
# refused WORDS ARGUMENT...: nothing was begun.
refused() {
    expect 2 "$@"
    [ ! -e "$work/tree/build" ] || { echo "./run demo ${*:2}: built something"; failures=$((failures + 1)); }
}

(cd "$work/elsewhere" && "$work/tree/run" elephants) >"$work/output" 2>&1 && failures=$((failures + 1))
grep -qx "./run: no command elephants; ./run help lists them" "$work/output" ||
    { echo "./run elephants does not name the word"; failures=$((failures + 1)); }

refused "unknown option --elephants" --elephants 5
refused "unknown option -x" --elements 5 -x
refused "no value after --threads" --threads
refused "not a whole number: 1e6" --elements 1e6
refused "members are generic, v3 and v4" --elements 5 --member v2
refused "unknown chapter epilogue" --chapter summary --chapter epilogue
refused "no such file: absent" absent
refused "more than one data file: data file" "data file" "data file"
expect 0 "usage: ./run demo" --elements 5 --help
[ ! -e "$work/tree/build" ] || { echo "--help built something"; failures=$((failures + 1)); }
! grep -E '.{101}' "$work/output" || { echo "longer than 100 columns"; failures=$((failures + 1)); }
while read -r name; do
    grep -q -- "$name" "$work/output" || { echo "--help does not tell of $name"; failures=$((failures + 1)); }
done < <("$2" --help | sed -nE 's/^ +(--[a-z]+).*/\1/p')

expect 0 "<examples/data/michelson_1879.txt>" --table
expect 0 "<$work/elsewhere/data file>" "data file" --elements 5
expect 0 "<$work/elsewhere/my picture.svg>" --picture "my picture.svg"
! grep -q "many words" "$work/output" || { echo "a build is not quiet"; failures=$((failures + 1)); }
tool cmake 'echo "[1/2] what went wrong"; exit 3'
expect 3 "what went wrong"

exit $((failures > 0))
