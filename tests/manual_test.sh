#!/usr/bin/env bash
# The manual is made without a warning, and has a page for each header and document and links that lead
# somewhere.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
command -v doxygen >/dev/null || exit 77
tools/make_manual.sh "$work"
cd "$work/html"
[ -f search/search.js ] || { echo "no search" >&2; exit 1; }
grep -q '_vtmdExp_HA' kef__vm__functions_8h.html || { echo "no functions" >&2; exit 1; }
broken=0
while IFS=: read -r page link; do
    target=${link%%#*}
    [ -z "$target" ] || [ -e "$target" ] || { echo "$page: $link leads nowhere" >&2; broken=1; }
done < <(grep -oE 'href="[^"]*"' *.html | grep -vE 'href="(https?|javascript|mailto):' | sed 's/href="//; s/"$//' | sort -u)
exit $broken
