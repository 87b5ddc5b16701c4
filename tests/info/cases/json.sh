# Whole documents: of a stream that ends in its header, and of one that turns out to be invalid.
cd "$GOLDEN" || exit
run --json g8_photo_64x64.C_0.0001.tk
run --json --check g8_flat_5x5.c.tk
