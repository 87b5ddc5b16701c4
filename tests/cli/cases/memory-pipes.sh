# A raw file that cannot seek, and outputs that cannot.
cat "$GOLDEN/g8_photo_64x64.raw" | run cc /dev/stdin 1 8 64 64 out.tk
cmp out.tk "$GOLDEN/g8_photo_64x64.cc.tk"
mkfifo pipe
cat pipe >out.tk &
run cc "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 pipe 9
wait
cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
cat pipe >out.raw &
run dc out.tk pipe
wait
cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
