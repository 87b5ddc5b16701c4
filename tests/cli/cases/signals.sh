# Where the signals of the system are not ignored, they end the process: the status says so, and
# nobody takes what is there for the whole.
cp "$GOLDEN/g8_photo_64x64.raw" "$GOLDEN/g8_photo_64x64.c.tk" .
head -c 300000 "$BASH" >in.raw
run c in.raw 1 8 600 500 in.tk >lines
with_signals() { env --default-signal=XFSZ,PIPE bash -c '$0; run "$@"' "$@" >lines 2>&1; tail -n 1 lines; }
for word in c C cc; do with_signals 'ulimit -f 1' $word g8_photo_64x64.raw 1 8 64 64 out.tk; done
for word in d D dc; do with_signals 'ulimit -f 1' $word g8_photo_64x64.c.tk out.raw; done
sizes out.tk out.raw
into_reader_of_one_byte() { with_signals : "$@" /dev/fd/5 5> >(head -c 1 >/dev/null); }
for word in c C cc; do into_reader_of_one_byte $word in.raw 1 8 600 500; done
for word in d D dc; do into_reader_of_one_byte $word in.tk; done
