# The status is 0 on purpose; the output stays empty.
cp "$GOLDEN/g8_flat_5x5.c.tk" in.tk
echo before >out.raw
run dc in.tk out.raw
sizes out.raw
