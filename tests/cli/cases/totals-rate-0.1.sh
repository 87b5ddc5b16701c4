# The stream fills the budget of 6553 bytes and is the beginning of the complete one.
head -c 65536 "$GOLDEN/g8_photo_261x1026.raw" >in.raw
run C in.raw 1 8 256 256 cut.tk 0.1
sizes cut.tk
run c in.raw 1 8 256 256 complete.tk
head -c 6553 complete.tk | cmp - cut.tk
