# The estimate for zeros of 8 x 8 pixels is that of a header, which dc does not take.
head -c 64 "$GOLDEN/g8_zero_64x64.raw" >zeros.raw
run cc zeros.raw 1 8 8 8 zeros.tk
sizes zeros.tk
run dc zeros.tk back.raw
sizes back.raw
