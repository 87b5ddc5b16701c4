# Exit statuses with and without --check; of several files the largest counts.
cd "$GOLDEN" || exit
complete=g8_photo_64x64.c.tk cut=g8_photo_64x64.C_0.2.tk invalid=g8_flat_5x5.c.tk
for stream in $complete $cut $invalid; do
  run $stream | tail -n 1
  run --check $stream | grep -e state -e exit
done
run --check $complete $cut $complete | tail -n 1
run --check $invalid $cut | tail -n 1
