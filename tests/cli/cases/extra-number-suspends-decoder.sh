# A negative number pauses the decoder after that row; the second call finishes the image.
for word in d D; do
  run $word "$GOLDEN/g8_photo_64x64.c.tk" out.raw -5
  cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
  run $word "$GOLDEN/rgb_photo_64x48.c.tk" $word.raw -5 | tail -n 1
done
cmp d.raw D.raw
sizes d.raw
