# The greatest sides that a header can name, with nothing behind it.
needs_plain_build
: >in.raw
for numbers in '1 8' '2 12' '2 16' '3 8'; do
  under_memory 300000 cc in.raw $numbers 65535 65535 out.tk
  sizes out.tk
done
for bytes in 001 002 003; do
  printf "TK30\\$bytes\\020\\377\\377\\377\\377\\000\\000\\000\\000\\000\\000\\007" >in.tk
  under_memory 300000 dc in.tk out.raw
  sizes out.raw
done
