# Too few and too many arguments; no file is made.
for count in 0 1 4 5 9; do
  set -- in.raw 1 8 4 4 out.tk 0.5 0 more
  run cc "${@:1:$count}" | tail -n 1
done
run dc | tail -n 1
run dc in.tk | tail -n 1
run dc in.tk out.raw 0 more | tail -n 1
run cC in.raw 1 8 4 4 out.tk | tail -n 1
run dd in.tk out.raw | tail -n 1
run mc in.raw 1 8 4 4 in.raw
ls
