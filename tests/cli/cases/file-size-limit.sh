# The system lets no file grow beyond 1 KiB: the error has the file's name and a status that is not 0,
# also where it only shows when the file is closed.
cp "$GOLDEN/g8_photo_64x64.raw" "$GOLDEN/g8_photo_64x64.c.tk" .
trap '' XFSZ
ulimit -f 1
for word in c C cc; do run $word g8_photo_64x64.raw 1 8 64 64 out.tk 2>&1 >lines | sed 's/^/stderr: /'; tail -n 1 lines; done
for word in d D dc; do run $word g8_photo_64x64.c.tk out.raw 2>&1 >lines | sed 's/^/stderr: /'; tail -n 1 lines; done
