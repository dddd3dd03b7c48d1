#!/bin/bash
# fuzz.sh BUILD: runs every fuzzer in BUILD for FUZZ_SECONDS from its seeds, and from what fuzz/corpus/ keeps of
# earlier runs. Inputs that break it are written to BUILD/crashes, interesting ones to BUILD/corpus. Fails when any
# fuzzer fails.
set -euo pipefail
build=$1
seconds=${FUZZ_SECONDS:-30}
python3 scripts/make_fuzz_seeds.py "$build/seeds"
mkdir -p "$build/crashes"

failed=()
found=0
for program in "$build"/fuzz/fuzz_*; do
  [[ -f $program && -x $program ]] || continue
  found=1
  name=${program##*/fuzz_}
  mkdir -p "$build/corpus/$name" "$build/seeds/$name" "$build/kept/$name"
  [[ ! -f fuzz/corpus/$name.zip ]] || python3 -m zipfile -e "fuzz/corpus/$name.zip" "$build/kept/$name"
  echo "fuzz_$name for $seconds s"
  if ! "$program" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$build/crashes/$name-" "$build/corpus/$name" "$build/seeds/$name" "$build/kept/$name" \
    >"$build/fuzz_$name.log" 2>&1 </dev/null; then
    failed+=("fuzz_$name")
    tail -n 50 "$build/fuzz_$name.log"
  else
    grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb)|^Done' \
      "$build/fuzz_$name.log" | sed 's/^/  /'
  fi
done
((found)) || {
  echo "There is no fuzzer in $build/fuzz" >&2
  exit 1
}
if ((${#failed[@]})); then
  echo "Failed: ${failed[*]} (inputs in $build/crashes)" >&2
  exit 1
fi
echo "No fuzzer found a fault."
