run m "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 "$GOLDEN/g8_photo_64x64.raw"
run m "$GOLDEN/g16_photo12_64x64.raw" 2 12 64 64 "$GOLDEN/g16_photo12_64x64.raw"
run m "$GOLDEN/rgb_photo_64x48.raw" 3 8 64 48 "$GOLDEN/rgb_photo_64x48.raw"
