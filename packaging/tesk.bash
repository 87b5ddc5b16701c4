# Completion of tesk and tesk-info for bash.

# Names of files for the current word, folders with a slash at their end.
_tesk_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_tesk_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2"); }

# What a raw file needs behind its name: bytes per pixel, then significant bits that fit them.
_tesk_geometry() { # POSITION WORD
  case $1 in
    3) _tesk_words '1 2 3' "$2" ;;
    4) if [ "${COMP_WORDS[3]}" = 2 ]; then _tesk_words '10 12 14 16' "$2"; else _tesk_words 8 "$2"; fi ;;
  esac
}

_tesk() {
  local word=${COMP_WORDS[COMP_CWORD]} position=$COMP_CWORD
  COMPREPLY=()
  if [ "$position" = 1 ]; then
    _tesk_words 'c C cc Cc d D dc Dc m' "$word"
    return
  fi
  case ${COMP_WORDS[1]}:$position in
    [cC]:[27] | [cC]c:[27] | m:[27] | [dD]:[23] | [dD]c:[23]) _tesk_files "$word" ;;
    [cC]:[34] | [cC]c:[34] | m:[34]) _tesk_geometry "$position" "$word" ;;
  esac
}

_tesk_info() {
  local word=${COMP_WORDS[COMP_CWORD]} i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    if [ "${COMP_WORDS[i]}" = -- ]; then
      _tesk_files "$word"
      return
    fi
  done
  case $word in
    -?*) _tesk_words '--sections --json --check --help --version' "$word" ;;
    *) _tesk_files "$word" ;;
  esac
}

complete -F _tesk tesk
complete -F _tesk_info tesk-info
