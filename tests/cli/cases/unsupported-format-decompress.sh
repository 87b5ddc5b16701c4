for bytes in 000 004 005 377; do
  printf "TK30\\$bytes\\010\\004\\000\\004\\000\\000\\000\\000\\000\\000\\000\\377" >in.tk
  for word in d D; do
    rm -f out.raw
    run $word in.tk out.raw
    sizes out.raw
  done
done
