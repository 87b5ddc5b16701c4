# Control characters of names, C1 among them, come out as JSON writes them, so that no name passes for
# a line of a report or reaches the terminal as a command. All else stays as it is.
stream=$GOLDEN/g8_one_1x1.c.tk
for name in $'line\nbreak' $'\033[2J' $'\177' $'\302\233m' $'\233m' 'a"b\c' $'\303\251' $'\377'; do
  cp "$stream" "$name"
  run "$name" | head -n 1
  rm "$name"
  run "$name"
  run --json "$name" >/dev/null
done
printf 'other' >$'tab\t'
run $'tab\t'
run $'--\aoption'
