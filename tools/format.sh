#!/usr/bin/env bash
# Formats the C++ sources; with --check, only says whether they are formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(-i)
[[ ${1:-} == --check ]] && mode=(--dry-run --Werror)
find src tests fuzz bench -name '*.h' -o -name '*.cpp' | sort | xargs clang-format "${mode[@]}"
