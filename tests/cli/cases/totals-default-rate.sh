# No rate means 1.5 times the raw size: 1.5 * 65536 - 16 bytes for the stream, which is complete.
head -c 65536 "$GOLDEN/g8_photo_261x1026.raw" >in.raw
run C in.raw 1 8 256 256 default.tk
run C in.raw 1 8 256 256 zero.tk 0
run c in.raw 1 8 256 256 complete.tk
cmp default.tk complete.tk
cmp zero.tk complete.tk
