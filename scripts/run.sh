#!/bin/bash
# run.sh EDITOR [FILES...]: starts the editor. Without a display it runs for a moment on a virtual
# screen with the sample (or the files), and leaves a picture of its window in build/orvanel.png.
set -euo pipefail
editorProgram=$1
shift

if [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]; then
  exec "$editorProgram" "$@"
fi

cd "$(dirname "$0")/.."
source scripts/headless.sh
if (($# == 0)); then
  python3 scripts/make_sample.py build/sample.tessel
  set -- build/sample.tessel
fi
startScreen
startEditor "$editorProgram" "$@"
takePicture build/orvanel.png
echo "There is no display here, so the editor ran on a virtual one; its window is in build/orvanel.png."
