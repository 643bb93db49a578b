#!/bin/sh
# The front end on good and bad input: exit status, and words that the output must
# contain. Usage: frontend_test.sh PROGRAM DATA-DIRECTORY
program=$1
data=$2/michelson_1879.txt
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
failures=0

# expect STATUS WORDS ARGUMENT...: runs the program on the arguments. No line may be longer than 100.
expect() {
    status=$1 words=$2
    shift 2
    "$program" "$@" >"$directory/output" 2>"$directory/errors"
    got=$?
    if grep -E '.{101}' "$directory/output"; then
        echo "frontend $*: longer than 100 columns"
        failures=$((failures + 1))
    fi
    cat "$directory/errors" >>"$directory/output"
    if [ $got != "$status" ] || ! grep -qF -e "$words" "$directory/output"; then
        echo "frontend $*: status $got, expected $status; expected the words: $words; output:"
        head -20 "$directory/output"
        failures=$((failures + 1))
    fi
}

# drawn WORDS...: the picture contains them.
drawn() {
    for words in "$@"; do
        grep -qF "$words" "$directory/picture.svg" ||
            { echo "no words $words in the picture"; failures=$((failures + 1)); }
    done
}

# file TEXT: a data file with that printf text; its name is $file.
file() {
    file=$directory/data
    printf "$1" >"$file"
}

unset KEF_VTM_MODE
expect 0 "299.85239" "$data" --chapter measurements
expect 0 "element 7500, overflow" "$data" --elements 10001 --threads 3 --chapter threads
expect 0 "index 50." "$data" --chapter errors
expect 0 "the same bits" "$data" --chapter accuracy
expect 0 "chi-square" "$data" --elements 54321 --chapter montecarlo
expect 0 "agree" "$data" --elements 54321 --chapter statistics
expect 0 "dExp" "$data" --elements 1
summary=$("$program" "$data" --elements 1 2>/dev/null | sed -n '/^[0-9]*\. In short/,$p' | wc -l)
[ "$summary" -ge 10 ] && [ "$summary" -le 20 ] ||
    { echo "$summary lines of summary"; failures=$((failures + 1)); }
expect 0 "sNearbyInt" "$data" --elements 100 --chapter summary --table
expect 0 "1790 to 1970" "$data" --chapter fitting
expect 0 "5e-11" "$data" --chapter complex
expect 2 "called Foo" "$data" --portrait Foo
expect 0 "never below zero" "$data" --chapter fitting
expect 0 "12 of 12" "$data" --elements 54321 --chapter statistics
expect 0 "The picture is in" "$data" --elements 1 --chapter statistics --chapter fitting --chapter complex --portrait Asin \
    --picture "$directory/picture.svg"
drawn '>block 5<' '>Outliers and a gap<' '>bars: found; curve: density<' '>Phase portrait of Asin z<' "height='1320'" '</svg>'
expect 1 "No such file" "$data" --chapter fitting --picture "$directory/absent/picture.svg"
export KEF_VTM_MODE=VTM_EP,VTM_ERRMODE_STDERR
expect 0 "0x403: accuracy EP" "$data" --elements 1000
expect 0 "errors +message" "$data" --chapter accuracy
unset KEF_VTM_MODE

file '# A title\n\n  1.5  \r\n2.5'
expect 0 "2 values from 1.5 to 2.5" "$file" --chapter measurements
file '3\n3\n3\n'
expect 0 "the spread is zero" "$file" --chapter measurements
expect 0 "12 of 12" "$file" --elements 9 --chapter statistics --picture "$directory/picture.svg"
file '1\n0\n-4\n'
expect 0 "out of domain" "$file" --chapter measurements
expect 0 "singularity" "$file" --chapter measurements
file '# Mass <a & b>, kg, by nobody\n1\n2\n2.5\n4\n'
expect 0 "The picture is in" "$file" --chapter fitting --picture "$directory/picture.svg"
drawn '>Mass &lt;a &amp; b>, kg<' '>measurements per 1 kg<'
expect 0 "The picture is in" "$file" --elements 9 --chapter statistics --picture "$directory/picture.svg"
drawn '>Mass &lt;a &amp; b>, kg<' '>all<'
file '1e308\n-1e308\n0\n1e-320\n'
expect 0 "" "$file" --elements 10

file '1\n2\nthree\n4 5\nnan\n1e999\n0x\001\n1\0002\n'
expect 1 "$file:3: not a number: \"three\"" "$file"
expect 1 "$file:4: more than one number" "$file"
expect 1 "$file:5: not a finite number" "$file"
expect 1 "$file:6: not a finite number" "$file"
expect 1 "$file:7: more than one number: \"0x?\"" "$file"
expect 1 "$file:8: more than one number: \"1?2\"" "$file"
expect 1 "6 bad lines; nothing was computed" "$file"
file "1\n2\n$(printf '%0300d' 1)\n"
expect 1 "$file:3: line too long" "$file"
file '# nothing here\n'
expect 1 "0 measurements found, at least 2 needed" "$file"
file '1\n'
expect 1 "1 measurement found" "$file"
expect 1 "No such file" "$directory/absent"
expect 1 "directory" "$directory"

expect 0 "usage:" --help
expect 2 "no data file given"
expect 2 "unknown option --elephants" --elephants 5 "$data"
expect 2 "no value after --elements" "$data" --elements
expect 2 "unknown chapter epilogue" "$data" --chapter epilogue
expect 2 "more than one data file" "$data" "$data"
for count in 0 -1 1e6 ten 99999999999999999999 ''; do
    expect 2 "wrong number of elements: $count" --elements "$count" "$data"
done
if [ -e /dev/full ] && "$program" "$data" --chapter errors >/dev/full 2>/dev/null; then
    echo "a full device went unnoticed"
    failures=$((failures + 1))
fi

exit $((failures > 0))
