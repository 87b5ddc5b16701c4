# The progress lines of the four words; everything comes back exactly.
raw=$GOLDEN/g16_photo12_64x64.raw
for word in c C; do run $word "$raw" 2 13 64 64 $word.tk; done
for word in d D; do
  run $word c.tk $word.raw
  cmp $word.raw "$raw"
done
cmp c.tk C.tk
