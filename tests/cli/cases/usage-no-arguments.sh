# The usage text goes to standard output.
exec "$TESK"
