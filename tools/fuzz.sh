#!/usr/bin/env bash
# Runs every fuzz target for some seconds, starting from its corpus. New inputs
# go to the build folder, not to the corpus.
set -euo pipefail
build=${1:?usage: fuzz.sh BUILD_FOLDER SECONDS}
seconds=${2:?usage: fuzz.sh BUILD_FOLDER SECONDS}
cd "$(dirname "$0")/.."

for program in "$build"/fuzz/*_fuzz; do
  name=$(basename "$program" _fuzz)
  found=$build/fuzz/found/$name
  mkdir -p "$found"
  echo "fuzzing $name"
  if ! "$program" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=0 -verbosity=0 \
      "$found" "fuzz/corpus/$name"; then
    exit 1
  fi
done
