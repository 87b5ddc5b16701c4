# The line on standard error names the file and the geometry that it should have had.
: >empty.raw
head -c 9215 "$GOLDEN/rgb_photo_64x48.raw" >rgb.raw
head -c 8191 "$GOLDEN/g16_photo12_64x64.raw" >words.raw
for numbers in 'empty.raw 1 8 1 1' 'rgb.raw 3 8 64 48' 'words.raw 2 12 64 64' \
  'words.raw 2 13 64 64' 'rgb.raw 1 8 60000 60000'; do
  run c $numbers out.tk | tail -n 1
done
