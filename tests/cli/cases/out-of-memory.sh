# 200 MB of address space are too few for 10000 x 20000 samples of 2 bytes.
needs_plain_build
head -c 1000 /dev/zero >in.raw
printf 'TK30\001\010\020\047\040\116\000\000\000\000\000\000\007' >in.tk
for word in c C; do under_memory 200000 $word in.raw 1 8 10000 20000 out.tk; done
for word in d D; do under_memory 200000 $word in.tk out.raw; done
under_memory 200000 m in.raw 1 8 10000 20000 in.raw
