# bash completion for orvanel-cli
_orvanel_cli() {
  local current=${COMP_WORDS[COMP_CWORD]} command='' places=0 word i
  local writes='@(tessel|png|jpg|jpeg|tiff|tif|gif|bmp)'
  # The command, and how many of its arguments stand before the cursor.
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if [[ $word == --* ]]; then
      continue
    elif [[ -z $command ]]; then
      command=$word
    else
      ((++places))
    fi
  done

  COMPREPLY=()
  if [[ $current == -* ]]; then
    local options='--help --version'
    [[ $command == run ]] && options='--time'
    [[ $command == recover ]] && options='--discard'
    [[ $command == info || $command == check || $command == convert ]] && options=''
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi
  case $command:$places in
    :*) mapfile -t COMPREPLY < <(compgen -W 'info check convert run recover' -- "$current") ;;
    check:*) _orvanel_files '!*.@(tessel)' ;;
    run:0) _orvanel_files '!*.@(json)' ;;
    convert:1 | run:2 | recover:1) _orvanel_files "!*.$writes" ;;
    info:0 | convert:0 | run:1) _orvanel_files '' ;;
  esac
}

# Folders, and the files that a filter leaves.
_orvanel_files() {
  local current=${COMP_WORDS[COMP_CWORD]}
  compopt -o filenames 2>/dev/null
  local restore
  restore=$(shopt -p extglob)
  shopt -s extglob
  mapfile -t COMPREPLY < <(compgen -d -- "$current"; compgen -f -X "$1" -- "$current")
  $restore
  # A folder comes from both.
  ((${#COMPREPLY[@]})) && mapfile -t COMPREPLY < <(printf '%s\n' "${COMPREPLY[@]}" | sort -u)
}

complete -F _orvanel_cli orvanel-cli
