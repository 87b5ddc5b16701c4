# A budget of 1 to 15 bytes leaves not even the header. Below 1 it is no budget.
for rate in 0.0036 0.001 0.00025; do
  echo before >out.tk
  run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk $rate
  sizes out.tk
done
run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk 0.0002
cmp out.tk "$GOLDEN/g8_photo_64x64.cc.tk"
