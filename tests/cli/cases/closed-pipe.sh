# The reader of the output goes away: the error has the output's name, where the signal does not end
# the process first.
trap '' PIPE
head -c 300000 "$BASH" >in.raw
run c in.raw 1 8 600 500 in.tk >lines
into_reader_of_one_byte() {
  run "$@" /dev/fd/5 5> >(head -c 1 >/dev/null) 2>&1 >lines | sed 's/^/stderr: /'
  tail -n 1 lines
}
for word in c C cc; do into_reader_of_one_byte $word in.raw 1 8 600 500; done
for word in d D dc; do into_reader_of_one_byte $word in.tk; done
