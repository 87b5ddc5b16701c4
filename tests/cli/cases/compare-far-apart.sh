# 16-bit samples at the two ends of their range.
printf '\000\000\377\377' >one
printf '\377\377\000\000' >other
run m one 2 16 2 1 other
