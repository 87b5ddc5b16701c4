# The figures are the only output: losing them is reported.
"$TESK" m "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 "$GOLDEN/g8_photo_64x64.raw" >/dev/full
