#!/usr/bin/env bash
# The manual as HTML: make_manual.sh DIRECTORY. Whatever the generator warns of is an error.
set -euo pipefail
directory=$(realpath -m "$1")
cd "$(dirname "$0")/.."
part() { sed -n "s/^#define KEF_VERSION_$1 //p" include/kef_version.h; }
mkdir -p "$directory"
KEF_MANUAL=$directory KEF_VERSION=$(part MAJOR).$(part MINOR).$(part PATCH) doxygen tools/Doxyfile
