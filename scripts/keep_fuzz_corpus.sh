#!/bin/bash
# keep_fuzz_corpus.sh BUILD: packs what the fuzzers in BUILD have found interesting into fuzz/corpus/, as few inputs
# as reach all that was reached. Inputs in BUILD/crashes whose fault is mended belong there, too: put them into
# BUILD/corpus/NAME first.
set -euo pipefail
build=$1
mkdir -p fuzz/corpus
for program in "$build"/fuzz/fuzz_*; do
  [[ -f $program && -x $program ]] || continue
  name=${program##*/fuzz_}
  rm -rf "$build/smallest/$name"
  mkdir -p "$build/smallest/$name" "$build/corpus/$name" "$build/kept/$name"
  "$program" -set_cover_merge=1 "$build/smallest/$name" "$build/kept/$name" "$build/corpus/$name" \
    >"$build/merge_$name.log" 2>&1 </dev/null
  rm -f "fuzz/corpus/$name.zip"
  (cd "$build/smallest/$name" && find . -type f -printf '%P\n' | sort |
    TZ=UTC python3 -c 'import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED, compresslevel=9) as out:
    for name in sys.stdin.read().split():
        out.writestr(zipfile.ZipInfo(name), open(name, "rb").read(), zipfile.ZIP_DEFLATED)' \
      "$OLDPWD/fuzz/corpus/$name.zip")
done
