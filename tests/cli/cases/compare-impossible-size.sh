run m "$GOLDEN/g8_photo_64x64.raw" 1 8 64 -1 "$GOLDEN/g8_photo_64x64.raw"
