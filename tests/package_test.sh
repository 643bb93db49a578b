#!/usr/bin/env bash
# The packaging agrees with the tree in versions and exported names: package_test.sh VERSION LIBRARY
set -euo pipefail
version=$1 library=$2
cd "$(dirname "$0")/.."
IFS=. read -r major minor _ <<<"$version"
below="libkef0 (<< $major.$((minor + 1))~)" # what has another interface number
failures=0
expect() { # what found expected
    [ "$2" = "$3" ] || { echo "$1 says: $2; expected: $3" >&2; failures=1; }
}
expect debian/changelog "$(sed -n '1s/.*(\(.*\)).*/\1/p' debian/changelog)" "$version"
expect python/pyproject.toml "$(sed -n 's/^version = "\(.*\)"$/\1/p' python/pyproject.toml)" "$version"
expect debian/control "$(grep -o 'libkef0 (<<[^)]*)' debian/control | sort -u)" "$below"
expect debian/libkef0.symbols "$(head -n 1 debian/libkef0.symbols)" "libkef.so.$major.$minor libkef0 #MINVER#, $below"

diff <(sed -n 's/^ \([^ ]*\) .*/\1/p' debian/libkef0.symbols | sort) \
    <(nm -D --defined-only "$library" | sed 's/.* //; s/@@/@/; s/^[^@]*$/&@&/' | sort) >&2 || {
    failures=1
    echo "written again by: dpkg-gensymbols -plibkef0 -v$version -e$library -Odebian/libkef0.symbols" >&2
}
exit $failures
