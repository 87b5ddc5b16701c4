mkfifo pipe
cat pipe >out.tk &
run c "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 pipe | tail -n 1
wait
cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
cat pipe >out.raw &
run d out.tk pipe | tail -n 1
wait
cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
