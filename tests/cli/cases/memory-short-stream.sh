# A header alone, or less, names no image. With one byte behind it the image is 0.
for bytes in 0 3 15 16 17; do
  head -c $bytes "$GOLDEN/g8_photo_64x64.c.tk" >in.tk
  run dc in.tk out.raw
  sizes out.raw
done
cmp out.raw "$GOLDEN/g8_zero_64x64.raw"
