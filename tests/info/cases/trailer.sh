# Trailers: what text and JSON say of them, what --check says of right and wrong checksums.
trailer() { # STREAM NAME DATA [NAME DATA]...: a stream with these boxes behind it, data in JSON's escapes
  python3 - "$@" <<'PYTHON'
import pathlib, struct, sys, zlib

def box(name, data):
    return name + struct.pack("<I", len(data)) + data

stream = pathlib.Path(sys.argv[1]).read_bytes()
texts = [text.encode().decode("unicode_escape").encode("latin1") for text in sys.argv[2:]]
boxes = b"".join(map(box, texts[::2], texts[1::2]))
trailer = b"TKTRAIL1" + box(b"crc ", struct.pack("<I", zlib.crc32(stream + boxes))) + boxes
sys.stdout.buffer.write(stream + trailer + struct.pack("<I", len(trailer) + 8) + b"TKT1")
PYTHON
}
look() { run "$@" | grep -e size -e state -e trailer -e status -e message -e exit; }

stream=$GOLDEN/g8_photo_64x64.c.tk
trailer "$stream" 'desc' 'A cat' 'icc ' '\0\1\2' >good.tk
look good.tk
look --check good.tk
look --check --json good.tk
look --check - <good.tk
cat good.tk | look --check -
# Behind something else that was read before.
{ printf 'front'; cat good.tk; } >shifted.tk
{ dd bs=5 count=1 of=/dev/null status=none; look --check -; } <shifted.tk
# Without boxes, and of names that come from strangers.
trailer "$stream" >bare.tk
look --check bare.tk
run --json bare.tk | grep -c '"trailer": {"bytes": 28, "checksum": "[0-9a-f]*", "boxes": \[\]}'
trailer "$stream" '\r\n\x1b[' '1' '"\\\377\0' '' '    ' '' '\302\233m ' 'ab' >names.tk
look --check names.tk
"$TESK" --json names.tk | python3 -c 'import json, sys; print(ascii(json.load(sys.stdin)["trailer"]["boxes"]))'
# A letter of the description, of the magic, and of the stream is another one.
sed 's/A cat/A bat/' good.tk >bat.tk
look bat.tk
look --check bat.tk
look --check --json bat.tk
sed 's/TKTRAIL1/TKTRAIL2/' good.tk >other.tk
look --check other.tk
{ head -c 6 good.tk; printf '\100\001'; tail -c +9 good.tk; } >wide.tk
look --check wide.tk
# A cut loses the trailer, and nothing else.
head -c 2540 good.tk | look --check -
