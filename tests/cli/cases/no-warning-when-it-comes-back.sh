# Nothing on standard error: these images come back, some only because of what they show.
photo=$GOLDEN/rgb_photo_33x65.raw
head -c 100 "$GOLDEN/g8_zero_64x64.raw" >zeros.raw
head -c 4 "$GOLDEN/g8_flat_64x64.raw" >flat.raw
round_trip() { # COMPRESS DECOMPRESS RAW GEOMETRY...
  local compress=$1 decompress=$2 raw=$3
  shift 3
  "$TESK" "$compress" "$raw" "$@" stream.tk >out
  "$TESK" "$decompress" stream.tk back.raw >>out
  cmp "$raw" back.raw && echo "$compress $*: the same"
}
for words in 'c d' 'C D' 'cc dc'; do
  # shellcheck disable=SC2086
  set -- $words
  round_trip "$1" "$2" "$photo" 3 8 33 65
  round_trip "$1" "$2" zeros.raw 1 8 1 100
  round_trip "$1" "$2" zeros.raw 1 8 2 50
done
round_trip c d flat.raw 1 8 2 2
round_trip cc dc flat.raw 1 8 2 2
