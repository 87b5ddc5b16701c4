# The greatest sides that a header can name, with nothing behind it, or one byte.
needs_plain_build
: >in.raw
for numbers in '1 8' '2 12' '2 16' '3 8'; do
  for word in c C; do under_memory 300000 $word in.raw $numbers 65535 65535 out.tk; done
  run c in.raw ${numbers/#?/4} 65535 65535 header.tk
  under_memory 300000 m in.raw $numbers 65535 65535 in.raw
done
for bytes in 001 002 003; do
  for behind in '' '\007'; do
    printf "TK30\\$bytes\\020\\377\\377\\377\\377\\000\\000\\000\\000\\000\\000$behind" >in.tk
    for word in d D; do
      under_memory 300000 $word in.tk out.raw
      sizes out.raw
    done
  done
done
