"""The viewer page in a headless browser, as a test sees it."""

import base64

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
--disable-component-update --disable-sync --window-size=1280,900 --force-device-scale-factor=1""".split()

# The pixels of the canvas: those of the rectangle of the picture, or of all of it.
PIXELS = """
const canvas = document.getElementById(arguments[0]), rectangle = arguments[1] ?? [0, 0, canvas.width, canvas.height];
const { data } = canvas.getContext("2d").getImageData(...rectangle);
let text = "";
for (let i = 0; i < data.length; i += 8192) text += String.fromCharCode(...data.subarray(i, i + 8192));
return [canvas.width, canvas.height, btoa(text)];
"""

# The digest of all pixels of the canvas: they would take long on their way here.
DIGEST = """
const canvas = document.getElementById("picture");
const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
crypto.subtle.digest("SHA-256", data).then((digest) => arguments[0](btoa(String.fromCharCode(...new Uint8Array(digest)))));
"""

# Fires what a browser fires when a file is dropped on the page.
DROP = """
const [name, base64] = arguments;
const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
const dataTransfer = new DataTransfer();
dataTransfer.items.add(new File([bytes], name));
for (const kind of ["dragover", "drop"])
  document.body.dispatchEvent(new DragEvent(kind, { dataTransfer, bubbles: true, cancelable: true }));
"""


def open_browser():
    options = webdriver.ChromeOptions()
    for flag in FLAGS:
        options.add_argument(flag)
    options.binary_location = "/usr/bin/chromium"
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class Page:
    def __init__(self, driver):
        self.driver = driver

    def open(self, address):
        self.driver.get(address)
        return self

    def text(self, name):
        return self.element(name).text

    def element(self, name):
        return self.driver.find_element(By.ID, name)

    def property(self, name, what):
        return self.element(name).get_property(what)

    def wait(self, holds, seconds=20):
        """Waits until a condition holds, with the page's words in the error if it does not."""
        WebDriverWait(self.driver, seconds, poll_frequency=0.03).until(lambda _: holds(), message=self.describe())

    def describe(self):
        return f"message: {self.text('message')!r}, figures: {self.text('figures')!r}"

    def wait_for_message(self, words, seconds=20):
        WebDriverWait(self.driver, seconds, poll_frequency=0.03).until(
            lambda _: words in self.text("message"), message=f"no {words!r}"
        )

    def drop(self, name, content):
        self.driver.execute_script(DROP, name, base64.b64encode(content).decode())

    def keys(self, *keys):
        """Presses keys where nothing has the focus."""
        webdriver.ActionChains(self.driver).send_keys(*keys).perform()

    def click(self, name):
        self.element(name).click()

    def choose(self, name, value):
        """Sets a slider or a field as a user does."""
        self.driver.execute_script(
            "arguments[0].value = arguments[1];"
            "for (const n of ['input', 'change']) arguments[0].dispatchEvent(new Event(n, { bubbles: true }));",
            self.element(name),
            str(value),
        )

    def pixels(self, rectangle=None, canvas="picture"):
        """Returns: width and height of the canvas, and the RGBA bytes of a rectangle of it."""
        width, height, text = self.driver.execute_script(PIXELS, canvas, rectangle)
        return width, height, base64.b64decode(text)

    def picture(self, width, height):
        """Returns: the RGBA bytes of an image that stands in the middle of the canvas, pixel for pixel."""
        canvas_width, canvas_height, _ = self.pixels([0, 0, 1, 1])
        corner = [(side - own + 1) // 2 for side, own in ((canvas_width, width), (canvas_height, height))]
        return self.pixels([*corner, width, height])[2]

    def hash(self):
        return base64.b64decode(self.driver.execute_async_script(DIGEST)).hex()

    def emulate_media(self, **features):
        features = [{"name": name.replace("_", "-"), "value": value} for name, value in features.items()]
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})

    def complaints(self):
        """Returns: what the browser wrote into its log since the last call: errors, and what the policy forbids."""
        entries = [entry["message"] for entry in self.driver.get_log("browser")]
        # Advice about the tests' own reading of the canvas.
        return [words for words in entries if "willReadFrequently" not in words]
