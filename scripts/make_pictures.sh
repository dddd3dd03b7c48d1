#!/bin/bash
# make_pictures.sh EDITOR [PHOTO]: takes the pictures in docs/ of the real editor on a virtual screen,
# with a photo, or with the sample when none is given: fitted, at 100 %, and close enough for the grid.
set -euo pipefail
cd "$(dirname "$0")/.."
editorProgram=$1
photo=${2:-}
source scripts/headless.sh
if [[ -z $photo ]]; then
  photo=build/sample.tessel
  python3 scripts/make_sample.py "$photo"
fi

press() {
  local key
  for key in "$@"; do
    xdotool key --clearmodifiers "$key"
    sleep 0.1
  done
}

startScreen 1440x900x24
startEditor "$editorProgram" "$photo"
xdotool windowsize --sync "$window" 1280 800
# The pointer away from everything that would answer to it.
xdotool mousemove 1439 899
sleep 1

press ctrl+0
takePicture docs/window-fit.png
press ctrl+1
# Down to where a photo usually has its detail.
xdotool mousemove 640 400
for ((turn = 0; turn < 14; ++turn)); do xdotool click 5; done
xdotool mousemove 1439 899
takePicture docs/window-100.png
# The steps from 100 % to 6400 %; at 4000 % pixels are large enough for the grid.
for ((step = 0; step < 11; ++step)); do press ctrl+plus; done
takePicture docs/window-grid.png
# A palette halves what every clone carries of a photograph, and nobody sees it at this size.
for picture in docs/window-fit.png docs/window-100.png; do
  convert "$picture" -dither FloydSteinberg -colors 255 "PNG8:$picture"
done
echo "The pictures are in docs/: window-fit.png, window-100.png, window-grid.png."
