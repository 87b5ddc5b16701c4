# An output that is the input, under its own name or another one, leaves the input as it is.
cp "$GOLDEN/g8_photo_64x64.raw" in.raw
cp "$GOLDEN/g8_photo_64x64.c.tk" in.tk
for file in in.raw in.tk; do
  ln $file hard.$file
  ln -s $file soft.$file
done
for name in ./ hard. soft.; do
  for word in c C cc; do run $word in.raw 1 8 64 64 ${name}in.raw; done
  for word in d D dc; do run $word in.tk ${name}in.tk; done
done
# The link is what is read, the file what would be written.
run c soft.in.raw 1 8 64 64 in.raw
run d /dev/stdin in.tk <in.tk
"$TESK" C in.raw 1 8 64 64 /dev/stdout >>in.raw
cmp in.raw "$GOLDEN/g8_photo_64x64.raw"
cmp in.tk "$GOLDEN/g8_photo_64x64.c.tk"
# What is no regular file has no such trouble.
run c /dev/null 1 8 0 0 /dev/null
