# The message names the file; no output is made.
for word in c C; do run $word missing.raw 1 8 4 4 out.tk; done
for word in d D; do run $word missing.tk out.raw; done
run m missing.raw 1 8 4 4 "$GOLDEN/g8_flat_5x5.raw"
run m "$GOLDEN/g8_flat_5x5.raw" 1 8 4 4 missing-too.raw
run c '' 1 8 4 4 out.tk
run d missing-folder/in.tk out.raw
ls
