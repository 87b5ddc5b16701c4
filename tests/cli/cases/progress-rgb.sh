# The progress lines of the four words; everything comes back exactly.
raw=$GOLDEN/rgb_photo_64x48.raw
for word in c C; do run $word "$raw" 3 8 64 48 $word.tk; done
for word in d D; do
  run $word c.tk $word.raw
  cmp $word.raw "$raw"
done
cmp c.tk C.tk
