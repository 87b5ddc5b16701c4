# Nothing that was asked for may get lost without a word.
{ "$TESK" --sections "$GOLDEN"/g8_photo_64x64.c.tk >/dev/full; } ; echo "exit status $?"
{ "$TESK" "$GOLDEN"/g8_one_1x1.c.tk >&-; } ; echo "exit status $?"
{ "$TESK" "$GOLDEN"/g8_one_1x1.c.tk missing.tk >/dev/full; } ; echo "exit status $?"
