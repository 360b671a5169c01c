#!/usr/bin/env bash
# clang-tidy over every source of a build folder that has a compile database.
# Sources that have passed are remembered by what they and the headers hold.
set -euo pipefail
build=${1:?usage: lint.sh BUILD_FOLDER}
cd "$(dirname "$0")/.."

cache=$build/lint-passed
mkdir -p "$cache"
headers=$(find src tests/support -name '*.h' -print0 | sort -z | xargs -0 cat .clang-tidy | sha256sum | cut -d' ' -f1)
export build cache headers
lint_one() {
  key=$( { echo "$headers"; cat "$1"; } | sha256sum | cut -d' ' -f1)
  [[ -e $cache/$key ]] && return 0
  clang-tidy --quiet -p "$build" "$1" 2>/dev/null && touch "$cache/$key" || { echo "lint: $1" >&2; return 1; }
}
export -f lint_one
find src -name '*.cpp' -print0 | sort -z | xargs -0 -n1 -P"$(nproc)" bash -c 'lint_one "$0"'
