# The header stays as the whole stream; the status is 0 on purpose.
for bytes in 4 0 5 -1 none; do
  for word in c C; do
    run $word "$GOLDEN/g8_photo_64x64.raw" $bytes 8 64 64 out.tk
    od -An -tx1 out.tk
  done
done
