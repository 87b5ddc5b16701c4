head -c 24 "$GOLDEN/g8_flat_5x5.raw" >short.raw
exec "$TESK" m short.raw 1 8 5 5 "$GOLDEN/g8_flat_5x5.raw"
