# A stream that cannot seek gives the same as a file.
for stream in g8_photo_261x1026.c rgb_photo_64x48.cc_0.2; do
  run dc "$GOLDEN/$stream.tk" file.raw
  cat "$GOLDEN/$stream.tk" | run dc /dev/stdin pipe.raw
  cmp file.raw pipe.raw
done
