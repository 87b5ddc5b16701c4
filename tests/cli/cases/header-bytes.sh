head -c 307200 /dev/zero >in.raw
run c in.raw 1 8 640 480 out.tk | tail -n 1
od -An -tx1 -N16 out.tk
