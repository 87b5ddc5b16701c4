# A capital letter and what follows the second c make no difference.
for word in cc Cc ccx cc-fast; do
  run $word "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk 0.2
  cmp out.tk "$GOLDEN/g8_photo_64x64.cc_0.2.tk"
done
for word in dc Dc dcd dccc; do
  run $word "$GOLDEN/g8_photo_64x64.c.tk" out.raw
  cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
done
run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk 0.2 -7
cmp out.tk "$GOLDEN/g8_photo_64x64.cc_0.2.tk"
run dc "$GOLDEN/g8_photo_64x64.c.tk" out.raw -5
cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
