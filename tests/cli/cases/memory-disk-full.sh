# Large output fails while it is written, small output when the file is closed.
run cc "$GOLDEN/g8_photo_261x1026.raw" 1 8 261 1026 /dev/full
run dc "$GOLDEN/g8_photo_261x1026.c.tk" /dev/full
run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 /dev/full
run dc "$GOLDEN/g8_noise_32x32.c.tk" /dev/full
# Nothing is written here, so nothing fails.
run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 /dev/full 0.001
cp "$GOLDEN/g8_flat_5x5.c.tk" in.tk
run dc in.tk /dev/full
