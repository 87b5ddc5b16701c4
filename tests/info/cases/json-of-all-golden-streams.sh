# Every document is valid, its sizes add up, and each section begins where the last one ended.
"$TESK" --json "$GOLDEN"/g8_photo_64x64.c.tk | python3 -m json.tool >/dev/null && echo "valid"
"$TESK" --json "$GOLDEN"/*.tk >all.json 2>/dev/null
python3 - <<'PYTHON'
import json
text = open("all.json").read()
place, documents = 0, []
while place < len(text):
    document, place = json.JSONDecoder().raw_decode(text, place)
    documents.append(document)
    place += 1  # the line end
counts = {}
for d in documents:
    counts[d["status"]] = counts.get(d["status"], 0) + 1
    if "sections" not in d:
        assert d["message"], d
        continue
    bits = 8 * 16 + (0 if d["top_plane"] is None else 8)
    for s in d["sections"]:
        assert 8 * s["byte"] + s["bit"] == bits, (d["file"], s)
        assert s["empty"] == (s["length_bits"] == 0)
        assert s["cut"] == (s["stored_bits"] < s["length_bits"])
        bits += s["header_bits"] + s["stored_bits"]
    assert bits + d["rest_bits"] == 8 * d["file_bytes"], d["file"]
    assert len(d["sections"]) == d["section_count"]
    assert d["stream_bytes"] + d["trailing_bytes"] == d["file_bytes"]
print(sorted(counts.items()))
PYTHON
