# Bytes behind the last row do not count.
cat "$GOLDEN/g8_photo_64x64.raw" "$GOLDEN/g8_noise_32x32.raw" >long.raw
for word in c C; do
  run $word long.raw 1 8 64 64 out.tk | tail -n 1
  cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
done
