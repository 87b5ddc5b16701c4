# Streams of each kind, complete, cut and invalid.
cd "$GOLDEN" || exit
run g8_photo_64x64.c.tk rgb_photo_64x48.C_0.2.tk g16_photo16_96x64.c.tk g8_flat_5x5.c.tk
run g8_photo_64x64.C_0.0001.tk g8_one_1x1.c.tk
