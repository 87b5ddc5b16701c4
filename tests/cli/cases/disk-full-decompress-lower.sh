# Output of many buffers.
run d "$GOLDEN/g8_photo_261x1026.c.tk" /dev/full | tail -n 1
