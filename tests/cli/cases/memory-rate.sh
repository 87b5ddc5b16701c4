# A budget is rate times raw size, header included; the stream is the beginning of the complete one.
for rate in 0.1 0.005 0.0042 0.0040; do
  run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate
  sizes out.tk
  cmp -n "$(stat -c %s out.tk)" out.tk "$GOLDEN/g8_photo_64x64.c.tk"
done
