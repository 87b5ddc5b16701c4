# What is no stream, or cannot be read. The other files are described all the same.
printf 'TK30\004\010\100\000\100\000\000\000\000\000\000\000\007' >unsupported.tk
printf 'TK30\001\010\100\000\100' >short.tk
printf 'TK31\001\010\100\000\100\000\000\000\000\000\000\000\007' >other.tk
: >empty.tk
for name in unsupported.tk short.tk other.tk empty.tk missing.tk . ''; do
  run "$name"
  run --json "$name"
done
cp "$GOLDEN"/g8_one_1x1.c.tk one.tk
run missing.tk one.tk other.tk
