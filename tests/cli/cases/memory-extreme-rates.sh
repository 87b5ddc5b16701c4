# What is no number of bytes sets no limit; nothing of that size is allocated.
needs_plain_build
for rate in -1 nan inf -inf 1e300 1e15 99; do
  under_memory 300000 cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate
  cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
done
