#!/bin/bash
# step.sh TITLE LOG COMMAND...: runs a long command with its output in LOG. Prints the title and, every 30
# seconds, the last line of the log. On failure, prints the end of the log and returns the command's exit status.
set -u
title=$1 log=$2
shift 2
mkdir -p "$(dirname "$log")"
started=$SECONDS
echo "$title (log: $log)"
"$@" >"$log" 2>&1 </dev/null &
command=$!
trap 'kill "$command" 2>/dev/null; exit 130' INT TERM
next=$((SECONDS + 30))
while kill -0 "$command" 2>/dev/null; do
  sleep 0.2
  if ((SECONDS >= next)); then
    printf '  %4d s  %s\n' $((SECONDS - started)) "$(tail -n 1 "$log" | cut -c 1-100)"
    next=$((SECONDS + 30))
  fi
done
wait "$command"
code=$?
if ((code != 0)); then
  tail -n 60 "$log"
  echo "$title failed after $((SECONDS - started)) s; see $log for the full output" >&2
fi
exit "$code"
