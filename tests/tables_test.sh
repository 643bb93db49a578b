#!/usr/bin/env bash
# Makes the generated tables again and compares them with those that stand.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for tool in tools/*_tables.py; do
    "$tool" "$work"
done
for table in "$work"/*; do
    cmp "$table" "vm/tables/${table##*/}"
done
