# The output stays empty.
for word in d D; do
  run $word "$GOLDEN/g8_flat_5x5.c.tk" $word.raw
  sizes $word.raw
done
