for word in c C; do
  cat "$GOLDEN/g8_photo_64x64.raw" | run $word /dev/stdin 1 8 64 64 out.tk | tail -n 1
  cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
done
