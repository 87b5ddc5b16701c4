# cc without a rate and dc: nothing is printed; the streams are those of c.
for image in 'g8_photo_64x64 1 8 64 64' 'rgb_photo_64x48 3 8 64 48' 'g16_photo16_96x64 2 16 96 64'; do
  set -- $image
  run cc "$GOLDEN/$1.raw" "${@:2}" out.tk
  cmp out.tk "$GOLDEN/$1.c.tk"
  run dc out.tk out.raw
  cmp out.raw "$GOLDEN/$1.raw"
done
