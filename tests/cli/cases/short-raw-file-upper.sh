# Missing samples are 0, half a 16-bit sample too.
check() { # SIZE FULL NUMBERS...
  head -c "$1" "$GOLDEN/$2.raw" >short.raw
  { cat short.raw; head -c 10000 /dev/zero; } | head -c $(($3 * $5 * $6)) >filled.raw
  run C short.raw "${@:3}" short.tk | tail -n 1
  run c filled.raw "${@:3}" filled.tk | tail -n 1
  cmp short.tk filled.tk
}
check 3000 g8_photo_64x64 1 8 64 64
check 0 g8_photo_64x64 1 8 64 64
check 5000 rgb_photo_64x48 3 8 64 48
check 4001 g16_photo12_64x64 2 12 64 64
check 4001 g16_photo12_64x64 2 13 64 64
