# The files are opened but not read, however short they are.
: >empty
for bytes in 5 4 0 -1 257; do run m empty $bytes 8 64 64 empty; done
