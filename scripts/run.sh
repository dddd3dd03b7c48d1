#!/bin/bash
# run.sh EDITOR [FILES...]: starts the editor. Without a display, it briefly runs on a virtual screen with the
# given files or the sample, and a screenshot is saved to build/orvanel.png.
set -euo pipefail
editorProgram=$1
shift

if [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]; then
  # Not in the window of another build that may be running.
  exec "$editorProgram" --new-window "$@"
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
echo "There is no display, so the editor ran on a virtual one. See build/orvanel.png for a screenshot."
