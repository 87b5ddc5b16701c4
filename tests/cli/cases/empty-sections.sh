# 10 MB of empty sections, then nothing: a cut stream, read in time that is proportional to its bytes.
printf 'TK30\001\010\100\000\100\000\000\000\000\000\000\000\007' >in.tk
head -c 10000000 /dev/zero >>in.tk
for word in d D dc; do
  SECONDS=0
  run $word in.tk out.raw >out
  tail -n 1 out
  # About 0.1 s without a sanitizer.
  [ "$SECONDS" -lt 15 ] || echo "$word took $SECONDS s"
  cmp out.raw <(head -c 4096 /dev/zero)
done
