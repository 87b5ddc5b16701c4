# Millions of empty sections: time proportional to the bytes, no memory for them. The greatest sides
# that a header can name, with nothing behind it and with noise: no memory unless it is decoded.
printf 'TK30\001\010\002\000\002\000\000\000\000\000\000\000\007' >sections.tk
head -c 10000000 /dev/zero >>sections.tk
SECONDS=0
run sections.tk
head -c 1000017 sections.tk >fewer.tk
run --sections fewer.tk | tail -n 2
"$TESK" --json fewer.tk | wc -l
[ "$SECONDS" -lt 30 ] || echo "took $SECONDS s"
# A section whose length is the greatest there is.
printf 'TK30\003\010\377\377\377\377\000\000\000\000\000\000\007\300\377\377\377\377\377' >long.tk
run --sections long.tk
needs_plain_build
printf 'TK30\003\010\377\377\377\377\000\000\000\000\000\000\007' >huge.tk
under_memory 100000 huge.tk
under_memory 100000 --check huge.tk
under_memory 100000 --json --check huge.tk
under_memory 100000 sections.tk | tail -n 1
