# Every word that names no mode prints the usage text, whatever follows.
for word in x cx Cx dx Dm mm M mc '' ' c' -h --help; do
  echo "word '$word'"
  run "$word" in.raw 1 8 4 4 out
done
ls
