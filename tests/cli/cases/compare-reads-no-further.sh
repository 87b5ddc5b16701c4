# What stands behind the last row does not count.
head -c 20 "$GOLDEN/g8_flat_5x5.raw" >four-rows.raw
run m "$GOLDEN/g8_flat_5x5.raw" 1 8 5 4 four-rows.raw
