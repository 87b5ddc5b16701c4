# Files do not take the numbers of standard streams that are closed: no message ends up in the output.
cp "$GOLDEN/g8_flat_5x5.c.tk" invalid.tk
echo 'no stream' >none.tk
closed() {
  "$TESK" "$@" >&- 2>&-
  echo "exit status $?"
}
closed dc invalid.tk out.raw
sizes out.raw
closed d none.tk out.raw
sizes out.raw
closed c "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 out.tk
cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
closed d out.tk out.raw
cmp out.raw "$GOLDEN/g8_photo_64x64.raw"
# Figures that nobody can read are no success, nor is an output that is closed.
closed m out.raw 1 8 64 64 out.raw
closed d out.tk /dev/stdout
cmp out.tk "$GOLDEN/g8_photo_64x64.c.tk"
