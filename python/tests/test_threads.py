"""Any number of threads, and what they gain."""

import asyncio
import gc
import os
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy
import pytest
import tesk
from conftest import picture


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


def test_codecs_end_with_their_threads():
    for _ in range(200):
        thread = threading.Thread(target=tesk.encode, args=(picture(16, 16),))
        thread.start()
        thread.join()
    gc.collect()
    assert not [item for item in gc.get_objects() if isinstance(item, threading.Thread) and item.is_alive()
                and item is not threading.current_thread() and not item.daemon]  # fmt: skip


def test_calls_can_be_awaited():
    async def both(image):
        stream = await asyncio.to_thread(tesk.encode, image)
        return await asyncio.to_thread(tesk.decode, stream)

    image = picture(60, 40)
    numpy.testing.assert_array_equal(asyncio.run(both(image)), image)


def seconds(threads, work, images):
    with ThreadPoolExecutor(threads) as pool:
        list(pool.map(work, images[:threads]))
        start = time.perf_counter()
        list(pool.map(work, images))
        return time.perf_counter() - start


@pytest.mark.skipif("TESK_TWO_FREE_CORES" not in os.environ, reason="needs two cores without other work")
@pytest.mark.parametrize("work", [tesk.encode, tesk.decode])
def test_two_threads_do_it_1_8_times_as_fast(work):
    images = [picture(1000, 2000, seed=i) for i in range(8)]
    if work is tesk.decode:
        images = [tesk.encode(image) for image in images]
    best = 0.0
    for _ in range(8):
        best = max(best, seconds(1, work, images) / seconds(2, work, images))
        if best >= 1.8:
            break
    print(f"{work.__name__}: two threads are {best:.2f} times as fast")
    assert best >= 1.8
