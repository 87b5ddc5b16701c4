# A negative side, whatever the other one is: nothing is opened or read, for no number of bytes per
# pixel. Numbers beyond 32 bits wrap, the last one to -8.
raw=$GOLDEN/g8_photo_64x64.raw
run m "$raw" 1 8 64 -1 "$raw"
for size in '8 -4' '-4 8' '-4 -4' '0 -1' '-1 0' '-4294967295 8' '4294967288 4'; do
  run m "$raw" 1 8 $size "$raw"
done
for bytes in 2 3 4 0 -1; do run m "$raw" $bytes 8 8 -4 "$raw"; done
run m missing.raw 1 8 -8 4 missing.raw
