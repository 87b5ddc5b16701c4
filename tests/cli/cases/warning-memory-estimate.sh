# The size that cc estimates cuts small images; a section may also be too long. Silent with a rate.
head -c 4 "$GOLDEN/g8_noise_32x32.raw" >small.raw
cp "$GOLDEN/g8_flat_5x5.raw" .
run cc small.raw 1 8 2 2 none.tk
run cc small.raw 1 8 2 2 rate.tk 5
sizes none.tk rate.tk
run cc g8_flat_5x5.raw 1 8 5 5 flat.tk
cmp flat.tk "$GOLDEN/g8_flat_5x5.cc.tk"
