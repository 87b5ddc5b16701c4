# An output that is the input, under its own name or another one, leaves the input as it is.
cp "$GOLDEN/g8_photo_64x64.raw" in.raw
cp "$GOLDEN/g8_photo_64x64.c.tk" in.tk
ln in.raw hard.raw
ln -s in.tk soft.tk
for word in c C cc; do run $word in.raw 1 8 64 64 ./in.raw; done
run c in.raw 1 8 64 64 hard.raw
for word in d D dc; do run $word in.tk in.tk; done
run d in.tk soft.tk
cmp in.raw "$GOLDEN/g8_photo_64x64.raw"
cmp in.tk "$GOLDEN/g8_photo_64x64.c.tk"
# What is no regular file has no such trouble.
run c /dev/null 1 8 0 0 /dev/null
