# One byte is missing from the last row.
head -c 24 "$GOLDEN/g8_flat_5x5.raw" >short.raw
exec "$TESK" c short.raw 1 8 5 5 out.tk
