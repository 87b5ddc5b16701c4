"""Pictures that nobody photographed: a page of text, a screenshot, labels, a line drawing. The same each time."""

import matplotlib
import numpy
from pathlib import Path
from PIL import Image, ImageDraw, ImageFont

PAGE = (1240, 1754)
SCREEN = (1280, 800)
WORDS = ("the stream of a picture begins with its header and every section after it makes the picture sharper until "
         "all bits are back in place so that a reader may stop where it likes").split()  # fmt: skip


def font(size, name="DejaVuSans.ttf"):
    """Of the fonts that come with matplotlib."""
    return ImageFont.truetype(str(Path(matplotlib.get_data_path()) / "fonts/ttf" / name), size)


def line_of_words(random, letters):
    """Returns: words, together about so many letters."""
    words = []
    while sum(map(len, words)) + len(words) < letters:
        words.append(str(random.choice(WORDS)))
    return " ".join(words)


def text_page():
    """A page of an article at 150 dots per inch: black on white, edges smoothed; gray."""
    random = numpy.random.default_rng(1)
    page = Image.new("L", PAGE, 255)
    draw = ImageDraw.Draw(page)
    draw.text((120, 110), "What a cut stream shows", 0, font(44))
    for row in range(58):
        if row % 15 != 14:
            draw.text((120, 200 + 25 * row), line_of_words(random, 88), 0, font(19))
    return numpy.asarray(page)


def window(draw, random, box, title):
    """A window with a bar, a title and lines of a program."""
    left, top, right, bottom = box
    draw.rectangle(box, (252, 252, 250), (120, 120, 130))
    draw.rectangle((left, top, right, top + 28), (62, 84, 128))
    draw.text((left + 10, top + 5), title, (255, 255, 255), font(15))
    for button, colour in enumerate(((230, 90, 80), (240, 190, 70), (100, 190, 90))):
        draw.ellipse((right - 24 - 22 * button, top + 7, right - 10 - 22 * button, top + 21), colour)
    inks = ((30, 30, 30), (150, 40, 110), (20, 110, 60), (40, 70, 170))
    for row, y in enumerate(range(top + 38, bottom - 22, 19)):
        ink, letters = inks[random.integers(4)], (right - left) // 12
        draw.text((left + 12 + 24 * (row % 3), y), line_of_words(random, letters), ink, font(13, "DejaVuSansMono.ttf"))


def screenshot():
    """A desktop with three windows, a bar and icons on a shaded ground; colours."""
    random = numpy.random.default_rng(2)
    shade = numpy.linspace(40, 150, SCREEN[1]).astype("u1")
    ground = numpy.stack([shade // 2, shade, 255 - shade // 2], axis=-1)
    screen = Image.fromarray(numpy.repeat(ground[:, None], SCREEN[0], axis=1))
    draw = ImageDraw.Draw(screen)
    draw.rectangle((0, 0, SCREEN[0], 30), (235, 235, 235))
    draw.text((14, 6), "Files   Edit   View   Help", (20, 20, 20), font(15))
    for icon in range(6):
        draw.rounded_rectangle((24, 60 + 110 * icon, 88, 124 + 110 * icon), 12, tuple(random.integers(60, 255, 3).tolist()))
    for number, box in enumerate(((130, 60, 760, 520), (420, 300, 1100, 760), (800, 80, 1250, 420))):
        window(draw, random, box, f"document {number + 1}")
    return numpy.asarray(screen)


def labels():
    """Cells of an image that a program has told apart: each has one number, the ground has 0; gray."""
    random = numpy.random.default_rng(3)
    picture = Image.new("L", (1024, 1024), 0)
    draw = ImageDraw.Draw(picture)
    for number in range(1, 256):
        x, y = random.integers(0, 1024, 2).tolist()
        across, down = random.integers(15, 50, 2).tolist()
        draw.ellipse((x - across, y - down, x + across, y + down), number)
    return numpy.asarray(picture)


def line_drawing():
    """Circles, curves and lines of a plan, black on white without smooth edges; gray."""
    random = numpy.random.default_rng(4)
    picture = Image.new("L", (1600, 1200), 255)
    draw = ImageDraw.Draw(picture)
    for _ in range(120):
        ends = random.integers(0, (1600, 1200), (2, 2))
        draw.line([tuple(ends[0].tolist()), (int(ends[1, 0]), int(ends[0, 1])), tuple(ends[1].tolist())], 0, 2)
    for _ in range(60):
        x, y, radius = random.integers((0, 0, 10), (1600, 1200, 160)).tolist()
        draw.arc((x - radius, y - radius, x + radius, y + radius), 0, int(random.integers(90, 360)), 0, 2)
    return numpy.asarray(picture)


def drawings():
    """Returns: the pictures by their names in tables."""
    return {"text page": text_page(), "screenshot": screenshot(), "labels": labels(), "line drawing": line_drawing()}
