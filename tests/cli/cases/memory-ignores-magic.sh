{ printf 'ABCD'; tail -c +5 "$GOLDEN/g8_photo_64x64.c.tk"; } >in.tk
run dc in.tk out.raw
cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
