# Peak 255 for 8 bits, 65535 for 16 bits; RGB counts all three samples of a pixel.
printf '\012\012\012\012\012\012' >ten
printf '\015\015\015\015\015\015' >thirteen
printf '\012\012\015\012\012\015' >mixed
run m ten 1 8 3 2 thirteen
run m ten 1 4 3 2 thirteen
run m ten 2 16 3 1 thirteen
run m ten 3 8 2 1 mixed
run m mixed 3 8 2 1 ten
