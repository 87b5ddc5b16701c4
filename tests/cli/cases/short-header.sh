# Header bytes that a file lacks are 0.
header='TK30\001\010\003\000\002\000\000\000\000\000\000\000'
for length in 4 5 6 7 8 9 15; do
  printf "$header" | head -c $length >in.tk
  for word in d D; do
    run $word in.tk out.raw | tail -n 1
    sizes out.raw
  done
done
