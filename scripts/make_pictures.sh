#!/bin/bash
# make_pictures.sh EDITOR [PHOTO]: takes the screenshots in docs/ on a virtual screen, with a photo or else the
# sample: fitted to the window, at 100 %, and zoomed in to the pixel grid.
set -euo pipefail
cd "$(dirname "$0")/.."
editorProgram=$1
photo=${2:-}
source scripts/headless.sh
# The documentation is in English.
export LC_ALL=C.UTF-8 LANGUAGE=
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
# Move the pointer away from anything that reacts to it.
xdotool mousemove 1439 899
sleep 1

press ctrl+0
takePicture docs/window-fit.png
press ctrl+1
# Scroll down to where a photo usually has more detail.
xdotool mousemove 640 400
for ((turn = 0; turn < 14; ++turn)); do xdotool click 5; done
xdotool mousemove 1439 899
takePicture docs/window-100.png
# Zoom in from 100 % to 6400 %; the grid is shown from 4000 %.
for ((step = 0; step < 11; ++step)); do press ctrl+plus; done
takePicture docs/window-grid.png
# A palette halves the size of the files in the repository, with no visible difference at this scale.
for picture in docs/window-fit.png docs/window-100.png; do
  convert "$picture" -dither FloydSteinberg -colors 255 "PNG8:$picture"
done
echo "The screenshots are in docs/: window-fit.png, window-100.png, window-grid.png."
