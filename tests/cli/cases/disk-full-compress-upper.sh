# Output of many buffers.
run C "$GOLDEN/g8_photo_261x1026.raw" 1 8 261 1026 /dev/full | tail -n 1
