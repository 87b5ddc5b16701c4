# 70000 - 65536 = 4464 columns, 65537 rows are 1, 257 bytes/pixel are 1, 264 bits/pixel are 8; that
# much of the raw file is read and comes back.
head -c 4464 /dev/zero >in.raw
for word in c C; do
  run $word in.raw 257 264 70000 65537 $word.tk | tail -n 1
  od -An -tx1 -N16 $word.tk
done
run d c.tk out.raw | tail -n 1
cmp in.raw out.raw
