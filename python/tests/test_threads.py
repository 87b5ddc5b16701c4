"""Any number of threads, and what they gain."""

import asyncio
import gc
import hashlib
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy
import pytest
import tesk
from conftest import picture
from tesk import _native


def test_sixteen_threads_get_what_one_gets():
    images = [picture(90 + i, 80, bits=8 + i % 9, seed=i) for i in range(64)]
    streams = [tesk.encode(image) for image in images]
    with ThreadPoolExecutor(16) as pool:
        assert list(pool.map(tesk.encode, images)) == streams
        for image, back in zip(images, pool.map(tesk.decode, streams)):
            numpy.testing.assert_array_equal(back, image)


def test_other_threads_go_on_while_one_encodes():
    image = picture(1000, 1000)
    steps = []
    worker = threading.Thread(target=lambda: [tesk.encode(image) for _ in range(9)])
    worker.start()
    while worker.is_alive():
        steps.append(time.perf_counter())
        time.sleep(0.001)
    # Held locks would show as a pause of a whole call.
    assert len(steps) > 20


class CountingLibrary:
    """The library, which counts the codecs that are destroyed and the blocks that are released."""

    def __init__(self, library):
        self.library = library
        self.destroyed = self.released = 0

    def __getattr__(self, name):
        return getattr(self.library, name)

    def tesk_destroy(self, codec):
        self.destroyed += 1
        self.library.tesk_destroy(codec)

    def tesk_release_block(self, codec, block):
        self.released += 1
        self.library.tesk_release_block(codec, block)


def test_codecs_end_with_their_threads(monkeypatch):
    library = CountingLibrary(_native.lib)
    monkeypatch.setattr(_native, "lib", library)
    for _ in range(20):
        thread = threading.Thread(target=tesk.encode, args=(picture(16, 16),))
        thread.start()
        thread.join()
    gc.collect()
    assert library.destroyed == 20


def test_blocks_end_with_their_calls(monkeypatch):
    library = CountingLibrary(_native.lib)
    monkeypatch.setattr(_native, "lib", library)
    for _ in range(3):
        tesk.encode(picture(16, 16))
    assert library.released == 3


def all_at_once(work, threads):
    """Returns: what the calls of so many threads raise."""
    errors = []

    def call():
        try:
            work()
        except (ValueError, tesk.Error) as error:
            errors.append(error)

    workers = [threading.Thread(target=call) for _ in range(threads)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return errors


def test_threads_may_write_to_one_encoder():
    """Calls that overlapped would end the process."""
    rows = picture(100, 800)
    encoder = tesk.Encoder((6000, 800), "u2", bits=12, verify=False)
    assert all_at_once(lambda: [encoder.write(rows) for _ in range(20)], 3) == []
    assert encoder.finish() == tesk.encode(numpy.tile(rows, (60, 1)), bits=12, verify=False)


def test_one_of_two_threads_gets_the_stream():
    image = picture(3000, 800)
    for _ in range(3):
        encoder = tesk.Encoder(image.shape, "u2", bits=12)
        encoder.write(image)
        streams = []
        errors = all_at_once(lambda: streams.append(encoder.finish()), 2)
        assert len(streams) == 1 and [str(error) for error in errors] == ["the Encoder is closed"]


def test_threads_may_read_from_one_decoder():
    decoder = tesk.Decoder(tesk.encode(picture(3000, 800)))
    blocks = []
    assert all_at_once(lambda: blocks.extend(decoder.blocks(50)), 3) == []
    assert sum(map(len, blocks)) == 3000


@pytest.mark.parametrize("pause", [0.001, 0.01, 0.03])
def test_a_thread_may_close_what_another_uses(pause):
    image = picture(4000, 800)
    encoder, decoder = tesk.Encoder(image.shape, "u2"), tesk.Decoder(tesk.encode(image, verify=False))

    def work():
        encoder.write(image)
        decoder.read(4000)

    def close():
        time.sleep(pause)
        encoder.close()
        decoder.close()

    closer = threading.Thread(target=close)
    closer.start()
    errors = all_at_once(work, 1)
    closer.join()
    assert all("is closed" in str(error) for error in errors)


def test_calls_can_be_awaited():
    async def both(image):
        stream = await asyncio.to_thread(tesk.encode, image)
        return await asyncio.to_thread(tesk.decode, stream)

    image = picture(60, 40)
    numpy.testing.assert_array_equal(asyncio.run(both(image)), image)


def gain(work, items):
    """Returns: how many times as fast two threads are as one."""
    spent = []
    for threads in (1, 2):
        with ThreadPoolExecutor(threads) as pool:
            list(pool.map(work, items[:threads]))
            start = time.perf_counter()
            list(pool.map(work, items))
            spent.append(time.perf_counter() - start)
    return spent[0] / spent[1]


def digest(image):
    """What needs no lock and hardly any memory."""
    return hashlib.sha256(image).digest()


@pytest.mark.parametrize("work", [tesk.encode, tesk.decode])
def test_two_threads_on_two_cores_are_1_8_times_as_fast(work):
    """Where other work takes a part of the cores, as much as it leaves to others."""
    images = [picture(1000, 1500, seed=i) for i in range(8)]
    items = [tesk.encode(image) for image in images] if work is tesk.decode else images
    rounds = []
    while len(rounds) < 10:
        rounds.append((gain(work, items), min(gain(digest, images), 2.0)))
        if rounds[-1][0] >= 0.9 * rounds[-1][1]:
            break
    print(work.__name__, "with two threads, and a digest:", *(f"{own:.2f} {other:.2f}," for own, other in rounds))
    assert rounds[-1][0] >= 0.9 * rounds[-1][1]
