# Bytes that a raw file lacks are 0, and more than it needs do not count.
head -c 5000 "$GOLDEN/rgb_photo_64x48.raw" >short.raw
{ cat short.raw; head -c 4216 /dev/zero; } >padded.raw
sizes padded.raw
for file in short padded; do run cc $file.raw 3 8 64 48 $file.tk 9; done
cmp short.tk padded.tk
: >empty.raw
run cc empty.raw 1 8 64 64 zero.tk
cmp zero.tk "$GOLDEN/g8_zero_64x64.cc.tk"
cat "$GOLDEN/g8_photo_64x64.raw" short.raw >long.raw
run cc long.raw 1 8 64 64 long.tk 9
cmp long.tk "$GOLDEN/g8_photo_64x64.c.tk"
