# The stream of the example in docs/format.md, section 16.
cd "$GOLDEN" || exit
run --sections g8_photo_64x64.C_0.02.tk
