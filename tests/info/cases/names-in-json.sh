# Names that JSON has to escape, and one that is no UTF-8.
for name in 'a"b\c' $'line\nbreak' $'\303\251' $'\377'; do
  cp "$GOLDEN"/g8_one_1x1.c.tk "$name"
  "$TESK" --json "$name" | python3 -c 'import json, sys; print(ascii(json.load(sys.stdin)["file"]))'
done
