# For scripts on machines without a display: starts a virtual screen and the editor on it, and takes
# screenshots. Ends everything it started when the script exits.

headlessProcesses=()
endHeadless() {
  local process
  for process in "${headlessProcesses[@]}"; do kill "$process" 2>/dev/null || true; done
  for process in "${headlessProcesses[@]}"; do wait "$process" 2>/dev/null || true; done
  headlessProcesses=()
}
trap endHeadless EXIT
trap 'exit 130' INT TERM

# startScreen [SIZE]: starts a virtual X screen with a free number and sets DISPLAY.
startScreen() {
  local numberFile
  numberFile=$(mktemp)
  Xvfb -displayfd 3 -screen 0 "${1:-1440x900x24}" -nolisten tcp 3>"$numberFile" >build/xvfb.log 2>&1 &
  headlessProcesses+=($!)
  local tries
  for ((tries = 0; tries < 100; ++tries)); do
    [[ -s $numberFile ]] && break
    sleep 0.1
  done
  DISPLAY=:$(<"$numberFile")
  rm -f "$numberFile"
  [[ $DISPLAY != : ]] || {
    echo "The virtual screen did not start:" >&2
    cat build/xvfb.log >&2
    return 1
  }
  export DISPLAY
  unset WAYLAND_DISPLAY
  export QT_QPA_PLATFORM=xcb
}

# startEditor PROGRAM FILES...: starts the editor, waits for its window and sets `window` to its id.
startEditor() {
  "$@" >build/editor.log 2>&1 </dev/null &
  editor=$!
  headlessProcesses+=("$editor")
  local tries
  for ((tries = 0; tries < 300; ++tries)); do
    window=$(xdotool search --onlyvisible --class orvanel 2>/dev/null | head -n 1 || true)
    [[ -z $window ]] || break
    kill -0 "$editor" 2>/dev/null || break
    sleep 0.1
  done
  if [[ -z $window ]]; then
    echo "The editor did not show a window:" >&2
    cat build/editor.log >&2
    return 1
  fi
  # Without a window manager, the window must be placed and focused explicitly.
  xdotool windowmove "$window" 0 0
  xdotool windowfocus "$window"
}

# takePicture FILE: takes a screenshot of the window once it has stopped changing.
takePicture() {
  local before='' now tries
  mkdir -p "$(dirname "$1")"
  for ((tries = 0; tries < 40; ++tries)); do
    sleep 0.3
    import -window "$window" -depth 8 "png24:$1"
    now=$(convert "$1" rgb:- | sha256sum)
    [[ $now == "$before" ]] && return 0
    before=$now
    kill -0 "$editor" 2>/dev/null || {
      echo "The editor has exited:" >&2
      cat build/editor.log >&2
      return 1
    }
  done
}
