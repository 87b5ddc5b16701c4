# A negative number pauses the encoder after that row, once: images of one plane are not affected,
# the colour planes of others lack the rows.
run c "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 gray.tk 0 -5
cmp gray.tk "$GOLDEN/g8_photo_64x64.c.tk"
cp "$GOLDEN/rgb_photo_64x48.raw" .
run c rgb_photo_64x48.raw 3 8 64 48 rgb.tk 0 -5
cmp rgb.tk "$GOLDEN/rgb_photo_64x48.c_0_-5.tk"
run C rgb_photo_64x48.raw 3 8 64 48 upper.tk 1 -7
cmp upper.tk "$GOLDEN/rgb_photo_64x48.C_1_-7.tk"
