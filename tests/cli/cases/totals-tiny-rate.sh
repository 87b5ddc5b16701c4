# A budget below 16 bytes leaves the header only; 17 and 24 bytes leave the beginning of the stream.
for rate in 0.0000001 -1e-30 0.003 0.004 0.00416 0.006; do
  run C "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate | grep -v ing
  sizes out.tk
done
head -c 24 "$GOLDEN/g8_photo_64x64.c.tk" | cmp - out.tk
run d out.tk out.raw | tail -n 1
sizes out.raw
