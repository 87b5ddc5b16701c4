# Files that do not begin with the four magic bytes, shorter ones included. The output file was
# made by then and stays empty.
: >empty.tk
printf 'TK3' >three.tk
printf 'TK31\001\010\004\000\004\000\000\000\000\000\000\000\377' >other.tk
for word in d D; do
  for stream in empty.tk three.tk other.tk; do
    rm -f out.raw
    run $word $stream out.raw
    sizes out.raw
  done
done
