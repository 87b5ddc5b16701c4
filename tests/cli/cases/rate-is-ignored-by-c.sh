for rate in 0.1 -1 nan none; do
  run c "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate | tail -n 1
  cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
done
