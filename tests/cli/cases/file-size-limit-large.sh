# As file-size-limit, with outputs of many buffers: the error shows while they are written.
cp "$GOLDEN/g8_photo_261x1026.raw" in.raw
cp "$GOLDEN/g8_photo_261x1026.c.tk" in.tk
trap '' XFSZ
ulimit -f 20
for word in c C cc; do run $word in.raw 1 8 261 1026 out.tk 2>&1 >lines | sed 's/^/stderr: /'; tail -n 1 lines; done
for word in d D dc; do run $word in.tk out.raw 2>&1 >lines | sed 's/^/stderr: /'; tail -n 1 lines; done
sizes out.tk out.raw
