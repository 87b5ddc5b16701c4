mkdir folder
run cc missing.raw 1 8 4 4 out.tk
run dc missing.tk out.raw
run cc "$GOLDEN/g8_flat_5x5.raw" 1 8 5 5 missing/out.tk
run dc "$GOLDEN/g8_zero_64x64.c.tk" missing/out.raw
run cc "$GOLDEN/g8_flat_5x5.raw" 1 8 5 5 folder
run dc "$GOLDEN/g8_zero_64x64.c.tk" folder
ls
