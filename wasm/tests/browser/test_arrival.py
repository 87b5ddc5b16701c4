"""Pictures that arrive: from a slow server, in the demonstration, under the slider."""

import hashlib

import pytest
from selenium.webdriver.common.keys import Keys


def rgba_of(raw, channels):
    """Returns: opaque pixels of samples of 8 bits."""
    rgba = bytearray(b"\xff") * (len(raw) // channels * 4)
    for channel in range(3):
        rgba[channel::4] = raw[min(channel, channels - 1) :: channels]
    return bytes(rgba)


def bytes_shown(page):
    return int(page.text("figureBytes").split(" of ")[0].replace(",", "") or 0)


def watch_arrival(page):
    """Returns: the hashes of the canvas until the message says that all has come."""
    seen = []
    while not page.text("message").startswith("Complete"):
        seen.append(page.hash())
        assert len(seen) < 500, page.describe()
    return seen


@pytest.mark.parametrize("name, size, speed, least", [
    ("retina.tk", 1_239_753, 200_000, 4),
    ("cat.tk", 171_395, 20_000, 8),
])  # fmt: skip
def test_pictures_sharpen_before_the_end_of_a_slow_answer(viewer, server, name, size, speed, least):
    viewer.open(server.address(f"index.html?file={name}%3Fspeed={speed}"))
    viewer.wait(lambda: viewer.element("figures").is_displayed())
    assert bytes_shown(viewer) < size
    assert len(set(watch_arrival(viewer))) >= least


@pytest.mark.parametrize("name, width, height, channels", [("g8_photo_161x121", 161, 121, 1), ("rgb_photo_33x65", 33, 65, 3)])
def test_the_canvas_has_the_samples_of_the_image_at_the_end(viewer, server, golden, name, width, height, channels):
    viewer.open(server.address(f"index.html?file={name}.c.tk"))
    viewer.wait_for_message("Every bit of the image is there")
    viewer.keys("1")
    viewer.wait(lambda: viewer.text("zoom") == "100 %" and "full size" in viewer.text("figureSize"))
    expected = rgba_of(golden(f"{name}.raw"), channels)
    viewer.wait(lambda: viewer.picture(width, height) == expected)


def test_the_demonstration_sharpens_beside_the_same_bytes_of_a_png(viewer, server):
    viewer.open(server.address("index.html"))
    viewer.wait(lambda: viewer.element("sequential").is_displayed())
    viewer.wait(lambda: bytes_shown(viewer) > 200_000)
    assert bytes_shown(viewer) < 1_239_753
    # The upper part of the PNG is there, its lower part is not.
    width, height, _ = viewer.pixels([0, 0, 1, 1], "other")
    middle = [width // 2, 20, 1, 1], [width // 2, height - 20, 1, 1]
    assert [viewer.pixels(at, "other")[2][3] for at in middle] == [255, 0]
    assert viewer.pixels(middle[1])[2][3] == 255
    viewer.choose("speed", "Infinity")
    viewer.wait_for_message("Complete: 1,239,753 bytes, 20.8 % of 5,972,763 raw bytes.")


def test_the_png_of_the_demonstration_has_the_samples_of_its_stream(page, server, tmp_path):
    """Their streams are equal, and a stream has one image."""
    page.driver.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": str(tmp_path)})
    page.element("file").send_keys(str(server.folders[0] / "retina.png"))
    page.wait_for_message("every sample is equal")
    page.click("save")
    page.wait(lambda: (tmp_path / "retina.png.tk").exists())
    assert (tmp_path / "retina.png.tk").read_bytes() == (server.folders[0] / "retina.tk").read_bytes()


def test_the_slider_shows_what_any_number_of_bytes_is_worth(page, server):
    page.wait(lambda: page.text("figureDistance") == "every sample equal")
    decibels = []
    for position in (950, 800, 600, 300):
        page.choose("bytes", position)
        page.wait(lambda: page.text("figureDistance").endswith("dB") and page.text("figureDistance") not in decibels)
        decibels.append(page.text("figureDistance"))
    values = [float(text.split()[0]) for text in decibels]
    assert values == sorted(values, reverse=True)
    # What the tool says of 12684 bytes of this stream stands in the README: 34.6 dB.
    page.driver.execute_script("document.getElementById('bytes').step = 'any'")
    page.choose("bytes", 719.38)
    page.wait(lambda: page.text("figureDistance") == "34.6 dB")
    assert page.text("figureRate") == "0.250"


def test_space_holds_the_arrival_and_lets_it_go_on(viewer, server):
    viewer.open(server.address("index.html"))
    viewer.wait(lambda: bytes_shown(viewer) > 1000)
    viewer.keys(Keys.SPACE)
    viewer.wait(lambda: viewer.property("play", "ariaLabel") == "Go on")
    held = viewer.property("arrived", "value")
    viewer.driver.execute_async_script("setTimeout(arguments[0], 400)")
    assert viewer.property("arrived", "value") <= held + 0.01
    viewer.choose("speed", "Infinity")
    viewer.keys(Keys.SPACE)
    viewer.wait_for_message("Complete")


def test_a_stream_that_was_cut_is_called_one(page, server):
    content = (server.folders[-1] / "cat.tk").read_bytes()
    page.drop("cut.tk", content[:20_000])
    page.wait_for_message("The stream ends early, after 20,000 bytes")


def test_bytes_behind_a_stream_are_not_counted(viewer, server, golden):
    # Dropped before the first file is there: what the user opens counts.
    viewer.open(server.address("index.html?file=cat.tk"))
    stream = golden("g8_photo_161x121.c.tk")
    viewer.drop("two.tk", stream + b"something else")
    viewer.wait_for_message(f"Complete: {len(stream):,} bytes")
    assert "14 bytes behind the stream are not part of it" in viewer.text("message")


def test_a_thumbnail_takes_the_bytes_that_it_says(page, server):
    page.click("address")
    page.element("url").send_keys("retina.tk")
    before = server.sent_bytes
    page.driver.find_element("css selector", "#addressDialog [value=thumbnail]").click()
    page.wait_for_message("in 2 requests")
    words = page.text("message")
    assert words.startswith("Enough for a thumbnail of 177 × 177 pixels: the first ")
    fetched = int(words.split("first ")[1].split(" of ")[0].replace(",", ""))
    assert fetched == server.sent_bytes - before < 1_239_753 / 20


def test_hashes_differ(page, server):
    """What the other tests rely on: the hash of the canvas is that of its pixels."""
    _, _, pixels = page.pixels()
    assert page.hash() == hashlib.sha256(pixels).hexdigest() != hashlib.sha256(bytes(len(pixels))).hexdigest()


def test_a_cut_stream_is_not_called_all_of_it(page, server):
    page.drop("cut.tk", (server.folders[-1] / "cat.tk").read_bytes()[:20_000])
    page.wait(lambda: page.text("figureDistance") == "not known: it ends early")
    assert page.text("figurePercent") == "–"
    assert page.text("figureBytes") == "20,000"
    assert "some of its bytes" in page.property("picture", "ariaLabel")


def test_once_more_paints_from_the_beginning(page):
    """While a picture of the end is still on its way."""
    page.choose("speed", 20_000)
    page.choose("bytes", 900)
    page.click("play")
    page.wait(lambda: "of 171,395" in page.text("figureBytes"))
    assert bytes_shown(page) < 100_000
    page.choose("speed", "Infinity")
    page.wait_for_message("Complete")


def test_a_comparison_belongs_to_the_picture_that_is_shown(page):
    page.wait(lambda: page.text("figureDistance") == "every sample equal")
    page.choose("bytes", 500)
    page.wait(lambda: page.text("figurePercent") != "100 %")
    assert page.text("figureDistance") != "every sample equal"
    page.wait(lambda: page.text("figureDistance").endswith("dB"))


def test_small_pictures_stand_where_the_image_stands(page):
    """The middle of what is dark stays where it is while the picture sharpens."""
    width, height = 256, 256
    rows = [bytes(20 if 100 <= x < 140 and 60 <= y < 100 else 220 for x in range(width)) for y in range(height)]
    page.drop("square.raw", b"".join(rows))
    page.wait(lambda: page.element("rawDialog").is_displayed())
    page.click("rawOpen")
    page.wait_for_message("every sample is equal")
    page.keys("1")
    page.wait(lambda: page.text("zoom") == "100 %")
    page.choose("bytes", 350)
    page.wait(lambda: "1 : " in page.text("figureSize"))
    page.driver.execute_async_script("setTimeout(arguments[0], 300)")
    shades = page.picture(width, height)[::4]
    weights = [(220 - shade if shade < 180 else 0, i % width, i // width) for i, shade in enumerate(shades)]
    total = sum(weight for weight, _, _ in weights)
    middle = [sum(w[0] * w[axis] for w in weights) / total for axis in (1, 2)]
    assert abs(middle[0] - 119.5) < 1.5 and abs(middle[1] - 79.5) < 1.5


def test_an_answer_without_a_length_has_no_per_cent(viewer, server):
    viewer.open(server.address("index.html?file=cat.tk%3Flength=no%26speed=50000"))
    viewer.wait(lambda: viewer.element("figures").is_displayed() and bytes_shown(viewer) > 5000)
    assert viewer.text("figurePercent") == "–"
    assert viewer.property("arrived", "position") == -1
    viewer.wait_for_message("Complete")
    viewer.wait(lambda: viewer.text("figurePercent") == "100 %")


def test_a_server_that_says_nothing_holds_up_nobody(page, server, golden):
    page.click("address")
    page.element("url").send_keys("cat.tk?silent=yes")
    page.driver.find_element("css selector", "#addressDialog [value=thumbnail]").click()
    page.drop("good.tk", golden("g8_photo_161x121.c.tk"))
    page.wait(lambda: "good.tk" in page.text("caption"))
    page.wait_for_message("Every bit")


def test_after_an_answer_that_breaks_off_the_source_can_be_tried_again(viewer, server):
    viewer.open(server.address("index.html?file=cat.tk%3Fbreak=60000"))
    viewer.wait_for_message("cat.tk: ")
    viewer.wait(lambda: viewer.property("play", "ariaLabel") == "Once more")
    assert viewer.complaints() != []
