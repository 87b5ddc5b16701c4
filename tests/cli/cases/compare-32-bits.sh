# The peak of 32 bits is -1, that of 64 bits (a shift of 0) is 0.
printf '\012\012\012\012' >ten
printf '\015\015\015\015' >thirteen
run m ten 1 32 2 2 thirteen
run m ten 1 31 2 2 thirteen
run m ten 1 64 2 2 thirteen
