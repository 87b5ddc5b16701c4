# The planes of 4000 x 8000 samples fit, the raw image beside them does not.
needs_plain_build
head -c 1000 /dev/zero >in.raw
printf 'TK30\001\010\240\017\100\037\000\000\000\000\000\000\377\377' >in.tk
under_memory 85000 C in.raw 1 8 4000 8000 out.tk
under_memory 85000 D in.tk out.raw
