# Any cut of a stream decodes, a bare header to zeros; d and D agree.
for bytes in 16 17 40 300 2539 2540; do
  head -c $bytes "$GOLDEN/g8_photo_64x64.c.tk" >cut.tk
  for word in d D; do run $word cut.tk $word.raw | tail -n 1; done
  cmp d.raw D.raw
  run m d.raw 1 8 64 64 "$GOLDEN/g8_photo_64x64.raw" | grep MSE
done
head -c 16 "$GOLDEN/g8_photo_64x64.c.tk" >header.tk
run d header.tk out.raw
cmp out.raw "$GOLDEN/g8_zero_64x64.raw"
