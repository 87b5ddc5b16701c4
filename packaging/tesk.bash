# Completion of tesk, tesk-info and tesk-convert for bash.

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

# Whether a -- stands in front of the current word: what follows it are files.
_tesk_behind_dashes() {
  local i
  for ((i = 1; i < COMP_CWORD; i++)); do
    [ "${COMP_WORDS[i]}" != -- ] || return 0
  done
  return 1
}

# An option when the word has begun as one, else a file.
_tesk_option_or_file() { # OPTIONS WORD
  case $2 in
    -?*) _tesk_words "$1" "$2" ;;
    *) _tesk_files "$2" ;;
  esac
}

_tesk_info() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if _tesk_behind_dashes; then
    _tesk_files "$word"
  else
    _tesk_option_or_file '--sections --json --check --help --version' "$word"
  fi
}

# The types behind WIDTHxHEIGHT: of raw samples. Bash takes a colon for a word of its own, and puts what
# is found behind it.
_tesk_raw_type() { # WORD
  _tesk_words "gray8 $(printf 'gray%d ' {9..16})gray16be int16 rgb8" "${1#:}"
}

_tesk_convert_options='--directory --recursive --only --to --jobs --resume --force --rm --raw --bytes --rate
  --bits-per-sample --bits --bare --drop-metadata --opaque --strict --reduce --thumbnail --check --max-pixels
  --log --quiet --verbose --help --version'

# What an option wants behind it. Returns: 1 when it wants nothing.
_tesk_convert_value() { # OPTION WORD
  case $1 in
    -d | --directory)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$2")
      ;;
    --only) _tesk_words 'images streams' "$2" ;;
    --to) _tesk_words 'png tif pgm ppm pnm pam npy raw' "$2" ;;
    --bits) _tesk_words 'auto 8 10 12 14 16' "$2" ;;
    --reduce) _tesk_words '1 2 3 4 5' "$2" ;;
    --log) _tesk_files "$2" ;;
    -j | --jobs | --raw | --bytes | --rate | --bits-per-sample | --thumbnail | --max-pixels) ;;
    *) return 1 ;;
  esac
}

_tesk_convert() {
  local word=${COMP_WORDS[COMP_CWORD]} line="${COMP_WORDS[*]:0:COMP_CWORD + 1}"
  COMPREPLY=()
  if _tesk_behind_dashes; then
    _tesk_files "$word"
  elif [[ $line =~ \ --raw\ [0-9]+x[0-9]+\ (:|:\ [a-z0-9]*)$ ]]; then
    _tesk_raw_type "$word"
  else
    _tesk_convert_value "${COMP_WORDS[COMP_CWORD - 1]}" "$word" ||
      _tesk_option_or_file "$_tesk_convert_options" "$word"
  fi
}

complete -F _tesk tesk
complete -F _tesk_info tesk-info
complete -F _tesk_convert tesk-convert
