# The progress lines of the four words; everything comes back exactly.
raw=$GOLDEN/g8_photo_64x64.raw
for word in c C; do run $word "$raw" 1 8 64 64 $word.tk; done
for word in d D; do
  run $word c.tk $word.raw
  cmp $word.raw "$raw"
done
cmp c.tk C.tk
