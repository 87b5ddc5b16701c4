"""Files that are dropped or chosen: streams, pictures, raw samples, and what is none of these."""

import io
import random

import pytest
from PIL import Image


def png_of(image):
    content = io.BytesIO()
    image.save(content, "PNG")
    return content.getvalue()


def pattern(mode, size=(60, 40)):
    channels = len(mode)
    return Image.frombytes(mode, size, random.Random(5).randbytes(size[0] * size[1] * channels))


@pytest.mark.parametrize("mode, raw_bytes, way", [
    ("RGB", 7200, "8 bits;"),
    ("L", 2400, "8 bits;"),
    ("RGBA", 7200, "8 bits, without its transparency;"),
])  # fmt: skip
def test_a_picture_is_compressed_by_way_of_a_canvas(page, mode, raw_bytes, way):
    content = png_of(pattern(mode))
    page.drop("noise.png", content)
    page.wait_for_message("every sample is equal")
    words = page.text("message")
    assert f"{raw_bytes:,} raw bytes became " in words
    assert way in words and f"the file has {len(content):,} bytes" in words


def test_the_samples_of_a_png_come_back(page):
    image = pattern("RGB")
    page.drop("noise.png", png_of(image))
    page.wait_for_message("every sample is equal")
    page.keys("1")
    page.wait(lambda: page.picture(60, 40) == image.convert("RGBA").tobytes())


@pytest.mark.parametrize("kind, order", [("gray16le", "<"), ("gray16be", ">")])
def test_raw_samples_are_asked_about(page, kind, order):
    values = [(37 * i) % 4096 for i in range(64 * 48)]
    content = b"HEAD" + b"".join(value.to_bytes(2, "little" if order == "<" else "big") for value in values)
    page.drop("frame.raw", content)
    page.wait(lambda: page.element("rawDialog").is_displayed())
    for name, value in {"rawKind": kind, "rawWidth": 64, "rawHeight": 48}.items():
        page.choose(name, value)
    assert "4 bytes are left over" in page.text("rawAnswer")
    page.choose("rawSkip", 4)
    assert page.text("rawAnswer") == "64 × 48 × 2 + 4 = 6,148 bytes: all of the file."
    page.click("rawOpen")
    page.wait_for_message("every sample is equal")
    assert "16-bit gray, 12 bits declared" in page.text("caption")


def test_more_samples_than_a_raw_file_has_are_refused(page):
    page.drop("frame.raw", bytes(1000))
    page.wait(lambda: page.element("rawDialog").is_displayed())
    page.choose("rawWidth", 2000)
    assert page.text("rawAnswer").endswith("more than the file has.")
    assert not page.element("rawOpen").is_enabled()
    page.driver.find_element("css selector", "#rawDialog [value=cancel]").click()
    page.wait(lambda: not page.element("rawDialog").is_displayed())


def test_window_and_level_of_16_bits(page):
    values = [1000 + i // 64 for i in range(64 * 48)]
    page.drop("frame.raw", b"".join(value.to_bytes(2, "little") for value in values))
    page.wait(lambda: page.element("rawDialog").is_displayed())
    for name, value in {"rawKind": "gray16le", "rawWidth": 64, "rawHeight": 48}.items():
        page.choose(name, value)
    page.click("rawOpen")
    page.wait_for_message("every sample is equal")
    page.keys("1")
    # 11 bits are used: 1000 of 2047 is a dark grey.
    page.wait(lambda: page.picture(64, 48)[0] == round(1000 * 255 / 2047))
    page.keys("a")
    page.wait(lambda: page.picture(64, 48)[0] == 0 and page.picture(64, 48)[-4] == 255)
    assert (page.text("lowValue"), page.text("highValue")) == ("1000", "1047")
    page.choose("low", 1010)
    page.wait(lambda: page.picture(64, 48)[10 * 64 * 4] == 0 < page.picture(64, 48)[11 * 64 * 4])
    page.keys("f")
    page.wait(lambda: page.text("highValue") == "2047")


def test_colours_have_no_window(page):
    page.drop("noise.png", png_of(pattern("RGB")))
    page.wait_for_message("every sample is equal")
    assert not page.element("window").is_displayed()


def test_what_cannot_be_shown_is_said_and_the_page_goes_on(page, server, golden):
    page.drop("empty.tk", b"")
    page.wait_for_message("empty.tk is empty")
    page.drop("junk.tk", b"TK30" + bytes(range(200)))
    page.wait_for_message("junk.tk: ")
    page.drop("short.tk", b"TK30")
    page.wait_for_message("short.tk: not a valid stream")
    page.drop("good.tk", golden("g8_photo_161x121.c.tk"))
    page.wait_for_message("Every bit")


def test_a_file_that_is_not_there_is_said(viewer, server):
    viewer.open(server.address("index.html?file=missing.tk"))
    viewer.wait_for_message("missing.tk: the server says 404")
    assert any("404" in words for words in viewer.complaints())


def test_other_servers_are_not_asked(viewer, server):
    viewer.open(server.address("index.html?file=http://127.0.0.2:9/a.tk"))
    viewer.wait_for_message("this page fetches files of its own server only")
    assert any("Content Security Policy" in words for words in viewer.complaints())


def test_damaged_streams_leave_the_page_usable(page, golden):
    good = golden("rgb_photo_33x65.c.tk")
    source = random.Random(7)
    for i in range(40):
        damaged = bytearray(good[: source.randrange(16, len(good))])
        for _ in range(source.randrange(1, 8)):
            damaged[source.randrange(16 if i % 4 else 0, len(damaged))] ^= 1 << source.randrange(8)
        damaged[0:4] = b"TK30"
        page.drop(f"damaged{i}.tk", bytes(damaged))
    page.drop("good.tk", good)
    page.wait_for_message("Every bit")
    assert "good.tk: 33 × 65" in page.text("caption")


def test_the_stream_can_be_saved(page, golden, tmp_path):
    page.driver.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": str(tmp_path)})
    page.drop("good.tk", golden("rgb_photo_33x65.c.tk"))
    page.wait(lambda: "good.tk" in page.text("caption") and page.element("save").is_displayed())
    page.click("save")
    page.wait(lambda: (tmp_path / "good.tk").exists())
    assert (tmp_path / "good.tk").read_bytes() == golden("rgb_photo_33x65.c.tk")


def test_what_was_opened_last_is_shown(page, golden):
    page.drop("slow.png", png_of(pattern("RGB", (900, 700))))
    page.drop("good.tk", golden("g8_photo_161x121.c.tk"))
    page.wait(lambda: "good.tk" in page.text("caption"))
    page.driver.execute_async_script("setTimeout(arguments[0], 1500)")
    assert "good.tk" in page.text("caption")


def test_nothing_of_the_picture_before_stays_with_a_file_that_is_none(page):
    page.drop("junk.tk", b"TK30" + bytes(range(200)))
    page.wait_for_message("junk.tk: ")
    assert page.text("caption") == "junk.tk"
    assert page.property("picture", "ariaLabel") == "No picture yet"
    for name in ("figures", "transport", "window"):
        assert not page.element(name).is_displayed()


def test_streams_may_be_larger_than_their_images(page):
    page.drop("noise.png", png_of(pattern("L", (16, 16))))
    page.wait_for_message("every sample is equal")
    assert "256 raw bytes became " in page.text("message")
    assert float(page.text("message").split(", ")[1].split(" %")[0]) > 100


def test_several_files_at_once_are_too_many(page):
    page.driver.execute_script("""
      const dataTransfer = new DataTransfer();
      for (const name of ["a", "b"]) dataTransfer.items.add(new File(["x"], name));
      document.body.dispatchEvent(new DragEvent("drop", { dataTransfer, bubbles: true, cancelable: true }));""")
    page.wait_for_message("2 files were dropped: one at a time, please")


def test_an_address_that_is_none_is_said(viewer, server):
    viewer.open(server.address("index.html?file=http://"))
    viewer.wait_for_message("http:// is no address")
