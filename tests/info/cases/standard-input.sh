# From a file, from the middle of a file, from a pipe, closed.
stream=$GOLDEN/g8_photo_64x64.c.tk
run --check - <"$stream"
{ printf 'lead'; cat "$stream"; } >later
{ head -c 4 >/dev/null; run --check -; } <later | tail -n 4
cat "$stream" | run --check - | tail -n 4
head -c 100 "$stream" | run --check - | grep -e size -e state -e exit
printf 'no stream' | run -
run - <&-
