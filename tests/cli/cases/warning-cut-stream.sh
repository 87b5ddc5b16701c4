# A rate asks for a loss, not for a stream that nobody can open: all coefficients of the coarsest order
# are new in one bit plane, and the length of that section does not fit its field. Standard output, the
# status and the stream are those of any image.
head -c 10000 /dev/zero | tr '\0' '\310' >bright.raw
for word in C cc c; do
  for rate in 0.01 0.015 1 5; do
    "$TESK" $word bright.raw 1 8 100 100 cut.tk $rate >/dev/null
    echo "$word $rate: exit status $?, $(stat -c %s cut.tk) bytes"
    "$TESK" d cut.tk back.raw >/dev/null
    echo "decompression: exit status $?"
  done
done
# A budget of a header alone holds nothing that could be taken for something else.
head -c 49 bright.raw >small.raw
run cc small.raw 1 8 7 7 cut.tk 0.3347
# Nothing is cut off but padding: the stream is complete for decoders, with the wrong image.
head -c 69 "$GOLDEN/g8_photo_131x173.raw" >thin.raw
"$TESK" c thin.raw 1 8 3 23 complete.tk >/dev/null 2>&1
bytes=$(($(stat -c %s complete.tk) - 1))
for word in C cc; do
  "$TESK" $word thin.raw 1 8 3 23 cut.tk "$(awk "BEGIN { print ($bytes + 0.5) / 69 }")" >/dev/null
  cmp <(head -c $bytes complete.tk) cut.tk
done
# Nothing is said where decoders come to the cut, or the stream restores the image.
for rate in 0.02 0.1 1; do
  for word in C cc c; do "$TESK" $word "$GOLDEN/g8_photo_131x173.raw" 1 8 131 173 cut.tk $rate >/dev/null; done
done
