# bash completion for orvanel
_orvanel() {
  COMPREPLY=()
  if [[ ${COMP_WORDS[COMP_CWORD]} == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--new-window --translation --help --version' -- "${COMP_WORDS[COMP_CWORD]}")
  fi
}

# Without an answer of its own: the names of files.
complete -o default -F _orvanel orvanel
