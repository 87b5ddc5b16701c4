# What stands behind the last row does not count, and is said of each of the files.
cp "$GOLDEN/g8_flat_5x5.raw" five-rows.raw
head -c 20 five-rows.raw >four-rows.raw
run m five-rows.raw 1 8 5 4 four-rows.raw
run m four-rows.raw 1 8 5 4 five-rows.raw
run m five-rows.raw 1 8 5 3 four-rows.raw
