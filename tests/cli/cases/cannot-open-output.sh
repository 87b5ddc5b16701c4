for word in c C; do run $word "$GOLDEN/g8_flat_5x5.raw" 1 8 5 5 missing/out.tk; done
for word in d D; do run $word "$GOLDEN/g8_zero_64x64.c.tk" missing/out.raw; done
