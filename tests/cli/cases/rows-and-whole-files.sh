# `c` and `d` go row by row; `C` and `D` read and write whole files at once, and a pipe cannot be read again. The
# streams and images are the same, cut ones too, and so is the doubt about a stream.
cat "$GOLDEN"/*.raw "$GOLDEN"/*.raw "$GOLDEN"/*.raw "$GOLDEN"/*.raw >bytes
for type in '1 8' '3 8' '2 11' '2 12' '2 16'; do
  head -c $((300 * 260 * ${type% *})) bytes >in.raw
  sizes in.raw
  "$TESK" c in.raw $type 300 260 rows.tk >rows.out
  "$TESK" c /dev/stdin $type 300 260 pipe.tk < <(cat in.raw) >pipe.out
  "$TESK" C in.raw $type 300 260 whole.tk >/dev/null
  cmp rows.tk whole.tk && cmp rows.tk pipe.tk && cmp rows.out pipe.out
  for bytes in 100000000 5000 301; do
    head -c $bytes rows.tk >cut.tk
    "$TESK" d cut.tk rows.raw >/dev/null
    "$TESK" D cut.tk whole.raw >/dev/null
    cmp rows.raw whole.raw
  done
done
head -c 250000 /dev/zero | tr '\0' '\007' >dark.raw
run c dark.raw 1 8 500 500 dark.tk
run c /dev/stdin 1 8 500 500 dark.tk < <(cat dark.raw)
run C dark.raw 1 8 500 500 dark.tk
head -c 70000 dark.raw >short.raw
run c short.raw 1 8 500 500 short.tk
sizes short.tk
