# Whatever sign a machine gives to a number that is none.
for size in '0 64' '64 0' '0 0'; do
  run m "$GOLDEN/g8_flat_5x5.raw" 1 8 $size "$GOLDEN/g8_flat_5x5.raw" | sed 's/-nan/nan/g'
done
