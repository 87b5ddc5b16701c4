run --help
run --version | sed 's/[0-9]\+\.[0-9]\+\.[0-9]\+/VERSION/'
run
run --json
run --bogus "$GOLDEN"/g8_one_1x1.c.tk
cp "$GOLDEN"/g8_one_1x1.c.tk ./--check
run -- --check
