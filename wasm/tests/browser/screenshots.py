"""Makes docs/images/viewer.jpg: the viewer at four moments of its demonstration, as a person sees it.

    /usr/bin/python3 wasm/tests/browser/screenshots.py
"""

import io

from conftest import ROOT, VIEWER
from page import Page, open_browser
from PIL import Image
from selenium.webdriver.common.keys import Keys
from server import Server
from test_arrival import bytes_shown

MOMENTS = [2_000, 10_000, 60_000]
SIZE = (1000, 800)
# Closer than the whole picture: vessels are to be seen.
ZOOM_KEYS = "+++"


# Slow enough for this script to stop it in time.
SLOWER = """
const speed = document.getElementById("speed");
speed.add(new Option("4 kB/s", "4000", false, true));
speed.dispatchEvent(new Event("change"));
"""


def screenshot(page):
    return Image.open(io.BytesIO(page.driver.get_screenshot_as_png())).convert("RGB")


def moments(page):
    """Yields the page when so many bytes have come, and at the end."""
    for least in MOMENTS:
        page.wait(lambda: page.element("figures").is_displayed() and bytes_shown(page) >= least)
        page.keys(Keys.SPACE)
        page.wait(lambda: page.property("play", "ariaLabel") == "Go on")
        if least == MOMENTS[0]:
            page.keys(ZOOM_KEYS)
            page.wait(lambda: page.element("sequential").is_displayed())
        page.driver.execute_script("document.activeElement.blur()")
        page.driver.execute_async_script("setTimeout(arguments[0], 500)")
        yield screenshot(page)
        page.choose("speed", 20_000)
        page.keys(Keys.SPACE)
    page.choose("speed", "Infinity")
    page.wait_for_message("Complete")
    page.wait(lambda: page.text("figureDistance") == "every sample equal")
    yield screenshot(page)


def montage(images):
    width, height = images[0].size
    sheet = Image.new("RGB", (2 * width + 12, 2 * height + 12), "white")
    for i, image in enumerate(images):
        sheet.paste(image, (i % 2 * (width + 12), i // 2 * (height + 12)))
    return sheet.resize((sheet.width * 2 // 3, sheet.height * 2 // 3), Image.LANCZOS)


def main():
    driver = open_browser()
    page = Page(driver)
    driver.set_window_size(*SIZE)
    with Server(VIEWER) as server:
        # The demonstration waits until it is asked for.
        page.emulate_media(prefers_reduced_motion="reduce")
        page.open(server.address("index.html"))
        page.wait_for_message("see the demonstration")
        page.driver.execute_script(SLOWER)
        page.click("demonstration")
        sheet = montage(list(moments(page)))
        server.shutdown()
    driver.quit()
    sheet.save(ROOT / "docs/images/viewer.jpg", quality=82, optimize=True)


if __name__ == "__main__":
    main()
