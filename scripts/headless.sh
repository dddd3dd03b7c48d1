# Sourced by the scripts that need a screen where there is none: a virtual one, the editor on it, and
# pictures of the editor's window. Ends what it started when the script ends.

headlessProcesses=()
endHeadless() {
  local process
  for process in "${headlessProcesses[@]}"; do kill "$process" 2>/dev/null || true; done
  for process in "${headlessProcesses[@]}"; do wait "$process" 2>/dev/null || true; done
  headlessProcesses=()
}
trap endHeadless EXIT
trap 'exit 130' INT TERM

# startScreen [SIZE]: a virtual X screen under a free number, and DISPLAY set to it.
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
    echo "No virtual screen came up:" >&2
    cat build/xvfb.log >&2
    return 1
  }
  export DISPLAY
  unset WAYLAND_DISPLAY
  export QT_QPA_PLATFORM=xcb
}

# startEditor PROGRAM FILES...: starts the editor and waits for its window; its id is in `window`.
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
    echo "The editor showed no window:" >&2
    cat build/editor.log >&2
    return 1
  fi
  # There is no window manager here that would do these two.
  xdotool windowmove "$window" 0 0
  xdotool windowfocus "$window"
}

# takePicture FILE: a picture of the window once it has stopped changing.
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
      echo "The editor has ended:" >&2
      cat build/editor.log >&2
      return 1
    }
  done
}
