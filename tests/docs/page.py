"""The blocks of code of a page, and the commands in them."""

import re

# The exit status of tesk-convert for images of cut streams.
APPROXIMATION = 3


def blocks(page):
    """Yields: kind and text of each block, and the text between it and the block above."""
    end = 0
    for block in re.finditer(r"^```(\w*)\n(.*?)^```$", page, flags=re.M | re.S):
        yield block[1], block[2], page[end:block.start()]
        end = block.end()


def commands(kind, text):
    """Yields: each command of a block, and what it must print; None when the page does not show that."""
    if kind == "console":
        for entry in re.split(r"^\$ ", text, flags=re.M)[1:]:
            command, _, shown = entry.partition("\n")
            yield command, shown
    else:
        for line in text.splitlines():
            yield re.sub(r"\s+#.*", "", line), None


def source_name(above):
    """Returns: the C file that is named last above a block, None when there is none."""
    names = re.findall(r"`([a-z_]+\.c)`", above)
    return names[-1] if names else None


def programs(page):
    """Returns: the text of each C program by its file name. A block belongs to the file that is named above it, or
    goes on with the one before."""
    texts, name = {}, None
    for kind, text, above in blocks(page):
        if kind == "c":
            name = source_name(above) or name
            texts[name] = texts[name] + "\n" + text if name in texts else text
    return texts
