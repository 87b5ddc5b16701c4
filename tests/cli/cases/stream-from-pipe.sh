# A stream that cannot seek gives the same as a file.
for stream in g8_photo_261x1026.c rgb_photo_64x48.C_0.2 g8_photo_64x64.C_0.0001; do
  for word in d D; do
    run $word "$GOLDEN/$stream.tk" file.raw | tail -n 1
    cat "$GOLDEN/$stream.tk" | run $word /dev/stdin pipe.raw
    cmp file.raw pipe.raw
  done
done
cat "$GOLDEN/g8_flat_5x5.c.tk" | run d /dev/stdin invalid.raw
cat "$GOLDEN/g8_flat_5x5.raw" | run d /dev/stdin other.raw
sizes invalid.raw other.raw
