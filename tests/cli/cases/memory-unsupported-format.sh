# The status is 0 on purpose; the output stays empty.
for bytes in 0 4 5 -1 none; do
  echo before >out.tk
  run cc "$GOLDEN/g8_photo_64x64.raw" $bytes 8 64 64 out.tk
  sizes out.tk
done
for bytes in 000 004 377; do
  printf "TK30\\$bytes\\010\\004\\000\\004\\000\\000\\000\\000\\000\\000\\000\\377" >in.tk
  echo before >out.raw
  run dc in.tk out.raw
  sizes out.raw
done
