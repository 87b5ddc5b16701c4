# Too few and too many arguments for each word; no file is made.
run c
run c in.raw 1 8 4
run C in.raw 1 8 4 4
run c in.raw 1 8 4 4 out.tk 0.5 0 more
run d
run D in.tk
run d in.tk out.raw 0 more
run m in.raw 1 8 4 4
run m in.raw 1 8 4 4 in.raw more
ls
