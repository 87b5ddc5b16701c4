# A stream with an end mark in its middle, behind a section that is longer than its length field can
# say. What was added behind a stream looks the same.
cp "$GOLDEN"/rgb_photo_101x77.c.tk early.tk
{ cat "$GOLDEN"/g8_one_1x1.c.tk; printf x; } >longer.tk
for name in early.tk longer.tk; do
  run "$name" | grep -e size -e state -e exit
  run --check "$name" | grep -e state -e exit
  run --json "$name" | grep -e '"status"' -e stream_bytes -e trailing_bytes
done
run --check --json early.tk | grep -e '"status"' -e exit
# Without what is behind the end mark there is nothing to doubt.
head -c 551 early.tk | run - | grep state
