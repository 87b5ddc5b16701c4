# Bytes behind the last row, counted against the geometry that the stream gets: 65538 columns are 2.
# Standard output and the stream are those of a file without them.
head -c 12 "$GOLDEN/rgb_photo_64x48.raw" >exact.raw
head -c 13 "$GOLDEN/rgb_photo_64x48.raw" >long.raw
for word in c C cc; do
  "$TESK" $word exact.raw 3 8 2 2 exact.tk 9 >exact.out
  "$TESK" $word long.raw 3 8 2 2 long.tk 9 >long.out
  echo "exit status $?"
  cmp exact.tk long.tk
  cmp exact.out long.out
done
run c long.raw 257 8 65538 2 other.tk | tail -n 1
run cc long.raw 2 16 65538 65538 other.tk 9
run C long.raw 1 8 0 5 other.tk | tail -n 1
run m long.raw 2 16 4294967298 3 long.raw | tail -n 1
# No word about a file whose length nobody knows, one of a format that there is not, or one that is
# never looked at.
cat long.raw | run c /dev/stdin 3 8 2 2 other.tk | tail -n 1
run cc long.raw 4 8 2 2 other.tk
run c long.raw 4 8 2 2 other.tk
run m long.raw 4 8 1 1 long.raw
run c long.raw 3 8 2 2 folder/other.tk
