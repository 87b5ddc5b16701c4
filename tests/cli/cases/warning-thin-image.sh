# What c says when the stream will not restore the image: one line on standard error. Standard output,
# the status and the stream are those of any image; a rate changes nothing, as c ignores it.
cp "$GOLDEN/g8_photo_3x100.raw" "$GOLDEN/g8_one_1x1.raw" .
run c g8_photo_3x100.raw 1 8 3 100 thin.tk
cmp thin.tk "$GOLDEN/g8_photo_3x100.c.tk"
run c g8_photo_3x100.raw 1 8 3 100 rate.tk 0.1
cmp rate.tk "$GOLDEN/g8_photo_3x100.c.tk"
run c g8_one_1x1.raw 1 8 1 1 one.tk
cmp one.tk "$GOLDEN/g8_one_1x1.c.tk"
run d thin.tk thin.raw >d.out
cmp -s thin.raw g8_photo_3x100.raw || echo "does not come back"
