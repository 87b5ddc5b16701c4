import pathlib

import pytest
from page import Page, open_browser
from server import Server

ROOT = pathlib.Path(__file__).resolve().parents[3]
VIEWER = ROOT / "build/wasm/viewer"


@pytest.fixture(scope="session")
def driver():
    driver = open_browser()
    yield driver
    driver.quit()


@pytest.fixture(scope="session")
def server():
    with Server(VIEWER, ROOT / "tests/golden", ROOT / "docs/images") as server:
        yield server
        server.shutdown()


@pytest.fixture
def viewer(driver, server):
    """The page, and a test that fails when the browser complains."""
    page = Page(driver)
    page.emulate_media(prefers_color_scheme="light", prefers_reduced_motion="no-preference")
    page.driver.set_window_size(1280, 900)
    page.complaints()
    yield page
    assert page.complaints() == []


@pytest.fixture
def page(viewer, server):
    """The page with a photograph that has arrived."""
    viewer.open(server.address("index.html?file=cat.tk"))
    viewer.wait_for_message("Every bit")
    return viewer


@pytest.fixture
def golden():
    return lambda name: (ROOT / "tests/golden" / name).read_bytes()
