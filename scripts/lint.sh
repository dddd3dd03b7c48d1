#!/bin/bash
# lint.sh BUILD JOBS: checks the formatting and runs clang-tidy with the compile commands of BUILD. Both always run.
set -euo pipefail
build=$1 jobs=$2
faults=0

mapfile -t files < <(find src tests bench fuzz -name '*.h' -o -name '*.cpp' | sort)
echo "clang-format: ${#files[@]} files"
clang-format --dry-run -Werror "${files[@]}" || faults=1

python3 scripts/tidy.py "$build" "$jobs" || faults=1
exit "$faults"
