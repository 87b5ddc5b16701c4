# The figures are the only output: a reader that went away is reported, where the signal does not end
# the process first.
trap '' PIPE
compare() { "$TESK" m "$GOLDEN/g8_photo_64x64.raw" 1 8 64 64 "$GOLDEN/g8_photo_64x64.raw"; }
mkfifo pipe
exec 5<>pipe 6>pipe 5<&-
compare >&6
echo "exit status $?"
