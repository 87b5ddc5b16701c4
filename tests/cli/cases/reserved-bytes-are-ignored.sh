{ head -c 10 "$GOLDEN/rgb_photo_64x48.c.tk"
  printf '\001\377\002\376\003\375'
  tail -c +17 "$GOLDEN/rgb_photo_64x48.c.tk"; } >in.tk
for word in d D; do
  run $word in.tk out.raw | tail -n 1
  cmp out.raw "$GOLDEN/rgb_photo_64x48.raw"
done
