#!/bin/bash
# Runs the tests of the history under ThreadSanitizer. The task scheduler must be instrumented too, so this builds
# the distribution's oneTBB with the sanitizer in build/races and uses it instead of the installed library. Needs a
# deb-src entry among apt's sources.
set -euo pipefail
cd "$(dirname "$0")/.."
here=$PWD/build/races
mkdir -p "$here/source"

if [[ -z $(find "$here/source" -name CMakeLists.txt -print -quit) ]]; then
  (cd "$here/source" && apt-get source -qq onetbb)
fi
scheduler=$(find "$here/source" -mindepth 1 -maxdepth 1 -type d | head -1)
cmake -S "$scheduler" -B "$here/scheduler" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTBB_TEST=OFF -DTBB_STRICT=OFF \
  -DCMAKE_CXX_FLAGS="-fsanitize=thread -g -O1" -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread
cmake --build "$here/scheduler" --target tbb
cmake -S . -B "$here/tests" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANEL_THREAD_SANITIZE=ON \
  -DORVANEL_ROOMS="raster;undo;model;io;tools;cli"
cmake --build "$here/tests" --target undo_tests model_records_tests tools_tests

library=$(find "$here/scheduler" -name libtbb.so.12 -print -quit)
for test in undo/undo_tests model/model_records_tests tools/tools_tests; do
  LD_LIBRARY_PATH=$(dirname "$library") TSAN_OPTIONS=halt_on_error=1 "$here/tests/tests/$test"
done
