#!/usr/bin/env bash
# Runs each fuzz target of BUILD for SECONDS from its seeds and records its executions.
# Usage: run.sh BUILD SECONDS. Exits non-zero at the first target with a finding.
set -euo pipefail
build=$(cd "$1" && pwd)
seconds=$2
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
# The targets keep their databases in a temporary folder; memory-backed when there is one.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
out="$build/executions.txt"
: >"$out"
run() {
  local target=$1
  local options=$2
  shift 2
  local corpus="$build/corpus/$target"
  mkdir -p "$corpus" "$build/findings/$target"
  # Seeds are copied, so the fuzzer's new inputs stay out of the source tree.
  for seeds in "$@"; do cp -n "$seeds"/* "$corpus"/ 2>/dev/null || true; done
  local log="$build/$target.log"
  if ! (cd "$build/findings/$target" &&
        "$build/tests/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
          -print_final_stats=1 $options "$corpus" >"$log" 2>&1); then
    tail -40 "$log"
    echo "fuzz: $target found a problem (log: $log, input in $build/findings/$target)" >&2
    exit 1
  fi
  local runs
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo '?')
  echo "$target $runs executions in $seconds s" | tee -a "$out"
}
run kwx_fuzz_stream_get "" "$source_dir/samples/studies" "$source_dir/tests/fuzz/seeds/stream"
run kwx_fuzz_statement "-dict=$source_dir/tests/fuzz/statement.dict" "$source_dir/tests/fuzz/seeds/statements"
