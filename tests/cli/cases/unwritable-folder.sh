# A folder in which nobody can make a file, not even root.
cp "$GOLDEN/g8_photo_64x64.raw" "$GOLDEN/g8_photo_64x64.c.tk" .
for word in c C cc; do run $word g8_photo_64x64.raw 1 8 64 64 /proc/out.tk; done
for word in d D dc; do run $word g8_photo_64x64.c.tk /proc/out.raw; done
