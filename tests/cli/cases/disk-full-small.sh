# Output that fits into one buffer: the error shows when the file is closed.
for word in c C; do run $word "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 /dev/full | tail -n 1; done
for word in d D; do run $word "$GOLDEN/g8_noise_32x32.c.tk" /dev/full | tail -n 1; done
run C "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 /dev/full 0.0001 | tail -n 1
run c "$GOLDEN/g8_photo_64x64.raw" 4 8 64 64 /dev/full | tail -n 1
