# A positive number stops after so many sections, as if the stream were cut there.
for sections in 1 7 100000; do
  run d "$GOLDEN/g8_photo_64x64.c.tk" d.raw $sections | tail -n 1
  run D "$GOLDEN/g8_photo_64x64.c.tk" D.raw $sections | tail -n 1
  cmp d.raw D.raw
  cmp d.raw "$GOLDEN/g8_photo_64x64.raw" | sed 's/.*differ.*/not all of the image/'
done
