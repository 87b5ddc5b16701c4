# No rate is 1.5 times the raw size for C, but the header needs more than that for 2 x 2 pixels. The
# same cut is nothing to speak of when a rate asked for it.
head -c 4 "$GOLDEN/g8_noise_32x32.raw" >small.raw
run C small.raw 1 8 2 2 none.tk
run C small.raw 1 8 2 2 zero.tk 0
run C small.raw 1 8 2 2 rate.tk 1.5
cmp none.tk zero.tk
cmp none.tk rate.tk
sizes none.tk
