# Output of many buffers.
run D "$GOLDEN/g8_photo_261x1026.c.tk" /dev/full | tail -n 1
