mkdir folder
for word in c C; do run $word folder 1 8 4 4 $word.tk | tail -n 1; done
for word in d D; do run $word folder $word.raw | tail -n 1; done
run m folder 1 8 4 4 folder | tail -n 1
