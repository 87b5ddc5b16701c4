# Negative numbers wrap, what is no number of bytes sets no limit: the stream is complete.
for rate in -1 nan inf -inf 1e300 1e15; do
  echo "rate $rate"
  run C "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate | grep -v ing
  cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk" && echo complete
done
