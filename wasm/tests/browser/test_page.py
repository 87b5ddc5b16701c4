"""The page itself: keys, touch, names for screen readers, contrast, motion, policy, and without a server."""

import pytest
from conftest import VIEWER
from selenium.webdriver.common.keys import Keys
from server import Server

INTERACTIVE = {"button", "slider", "combobox", "textbox", "spinbutton", "link", "image", "progressbar", "status"}


def tree(page):
    """Returns: role and name of all that screen readers see and say."""
    nodes = page.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
    value = lambda node, what: node.get(what, {}).get("value", "")  # noqa: E731
    return [(value(n, "role").lower(), value(n, "name")) for n in nodes if not n["ignored"]]


def test_everything_that_can_be_used_has_a_name(page):
    for dialog in ("helpDialog", "rawDialog", "addressDialog", None):
        if dialog:
            page.driver.execute_script(f"document.getElementById('{dialog}').showModal()")
        found = [(role, name) for role, name in tree(page) if role in INTERACTIVE]
        assert len(found) > 0
        assert [node for node in found if node[1] == "" and node[0] != "status"] == []
        if dialog:
            page.driver.execute_script(f"document.getElementById('{dialog}').close()")


def test_the_focus_goes_through_the_page_from_above(page):
    order = []
    page.driver.execute_script("document.activeElement.blur(); getSelection().collapse(document.body, 0)")
    for _ in range(16):
        page.keys(Keys.TAB)
        order.append(page.driver.execute_script("return document.activeElement.id || document.activeElement.className"))
    expected = ["skip", "demonstration", "file", "address", "help", "picture", "play", "bytes", "speed"]
    assert order[: len(expected)] == expected
    assert order[len(expected) : len(expected) + 4] == ["zoomOut", "zoomIn", "fit", "actual"]


def test_keys_zoom_and_move(page):
    before = page.text("zoom"), page.hash()
    page.keys("+")
    page.wait(lambda: page.text("zoom") != before[0] and page.hash() != before[1])
    page.keys("1")
    page.wait(lambda: page.text("zoom") == "100 %")
    page.keys("++++++")
    page.wait(lambda: page.text("zoom") == "381 %")
    still = page.hash()
    page.keys(Keys.ARROW_LEFT)
    page.wait(lambda: page.hash() != still)
    page.keys("0")
    page.wait(lambda: page.text("zoom") == before[0] and page.hash() == before[1])


def test_brackets_take_bytes_and_give_them_back(page):
    page.keys("[[")
    page.wait(lambda: page.text("figurePercent") != "100 %")
    page.keys("]]]")
    page.wait(lambda: page.text("figurePercent") == "100 %")


def test_two_fingers_zoom(page):
    zoom = page.text("zoom")
    left, top = page.driver.execute_script(
        "const b = document.getElementById('picture').getBoundingClientRect(); return [b.left + b.width / 2, b.top + b.height / 2]"
    )
    touch = lambda kind, spread: page.driver.execute_cdp_cmd(  # noqa: E731
        "Input.dispatchTouchEvent",
        {"type": kind, "touchPoints": [{"x": left - spread, "y": top, "id": 0}, {"x": left + spread, "y": top, "id": 1}] if spread else []},
    )
    touch("touchStart", 40)
    for spread in (60, 80, 100, 120):
        touch("touchMove", spread)
    touch("touchEnd", 0)
    page.wait(lambda: page.text("zoom") != zoom)
    assert int(page.text("zoom").split()[0]) > 2 * int(zoom.split()[0])


def luminance(colour):
    parts = [int(part) / 255 for part in colour[colour.index("(") + 1 : -1].split(",")[:3]]
    red, green, blue = (p / 12.92 if p <= 0.04045 else ((p + 0.055) / 1.055) ** 2.4 for p in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(page, element, ground):
    of = "return getComputedStyle(arguments[0])[arguments[1]]"
    ink = luminance(page.driver.execute_script(of, page.element(element), "color"))
    paper = luminance(page.driver.execute_script(of, page.driver.find_element("css selector", ground), "backgroundColor"))
    return (max(ink, paper) + 0.05) / (min(ink, paper) + 0.05)


@pytest.mark.parametrize("scheme", ["light", "dark"])
def test_words_have_contrast(page, scheme):
    page.emulate_media(prefers_color_scheme=scheme)
    for element, ground in {"caption": "body", "message": "body", "help": "#help", "figureBytes": "body", "arrived": "body"}.items():
        assert contrast(page, element, ground) >= 4.5, (element, scheme)


def test_less_motion_waits_for_the_user(viewer, server):
    viewer.emulate_media(prefers_reduced_motion="reduce")
    viewer.open(server.address("index.html"))
    viewer.wait_for_message("Open a file, or see the demonstration.")
    viewer.click("demonstration")
    viewer.wait(lambda: viewer.element("figures").is_displayed())


@pytest.mark.parametrize("size", [(1280, 900), (800, 600), (375, 700)])
def test_nothing_is_wider_than_the_window(page, size):
    page.driver.set_window_size(*size)
    page.wait(lambda: page.driver.execute_script("return document.documentElement.scrollWidth <= innerWidth"))
    page.wait(lambda: page.property("picture", "clientHeight") > 100)


def test_the_page_works_from_a_folder(viewer, golden):
    """With everything in one file: nothing but this file is read."""
    viewer.open((VIEWER / "offline.html").as_uri())
    viewer.wait(lambda: viewer.element("sequential").is_displayed())
    viewer.choose("speed", "Infinity")
    viewer.wait_for_message("Complete: 1,239,753 bytes")
    viewer.drop("good.tk", golden("g8_photo_161x121.c.tk"))
    viewer.wait(lambda: "good.tk" in viewer.text("caption"))
    viewer.wait_for_message("Every bit")


def test_without_the_demonstration_the_page_says_so(viewer, golden, tmp_path):
    (tmp_path / "index.html").write_bytes((VIEWER / "index.html").read_bytes())
    with Server(tmp_path) as bare:
        viewer.open(bare.address("index.html"))
        viewer.wait_for_message("the demonstration is not beside this page")
        assert any("404" in words for words in viewer.complaints())
        viewer.drop("good.tk", golden("g8_photo_161x121.c.tk"))
        viewer.wait_for_message("Every bit")
        bare.shutdown()


def test_the_page_asks_for_nothing_but_its_own_files(viewer, server):
    viewer.open(server.address("index.html"))
    viewer.choose("speed", "Infinity")
    viewer.wait_for_message("Complete")
    names = viewer.driver.execute_script("return performance.getEntriesByType('resource').map((e) => e.name)")
    own = {server.address("retina.tk"), server.address("retina.png")}
    assert {name for name in names if not name.startswith(("blob:", "data:"))} == own
