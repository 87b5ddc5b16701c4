# The first file is long enough, the second is not.
head -c 24 "$GOLDEN/g8_flat_5x5.raw" >short.raw
exec "$TESK" m "$GOLDEN/g8_flat_5x5.raw" 1 8 5 5 short.raw
