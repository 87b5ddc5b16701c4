"""Stacks of images as instruments make them, generated with fixed seeds, and photographs that everybody may use."""

import numpy
from scipy import ndimage

SIDE = 1024
FRAMES = 2
# scikit-image's documentation names their licences: CC0, or without known restrictions.
GRAY_PHOTOGRAPHS = ("camera", "brick", "gravel", "grass")
COLOUR_PHOTOGRAPHS = ("astronaut", "coffee", "chelsea")


def grid():
    return numpy.mgrid[0:SIDE, 0:SIDE] / SIDE


def blobs(random, count, radius, bright):
    """Returns: soft spots of random places and brightness."""
    picture = numpy.zeros((SIDE, SIDE))
    places = random.integers(0, SIDE, (2, count))
    numpy.add.at(picture, tuple(places), random.exponential(bright, count) * 2 * numpy.pi * radius**2)
    return ndimage.gaussian_filter(picture, radius, mode="wrap")


def camera_counts(random, electrons, gain, offset, noise, bits):
    """Returns: what a camera makes of light: photon noise, noise of reading, offset, and a largest value."""
    counts = offset + gain * random.poisson(electrons) + random.normal(0, noise, electrons.shape)
    return numpy.clip(numpy.rint(counts), 0, 2**bits - 1).astype("uint16")


def fluorescence(random):
    """Cells on a bright background, 12 bits."""
    light = 60 + blobs(random, 90, 18, 250) + blobs(random, 700, 2.5, 300)
    return camera_counts(random, light, 1.4, 100, 2, 12)


def light_sheet(random):
    """A tenth of the picture is tissue; the rest is the noise of reading above an offset, 16 bits declared."""
    rows, columns = grid()
    tissue = ndimage.gaussian_filter(random.normal(size=(SIDE, SIDE)), 6, mode="wrap") * 21
    inside = numpy.exp(-(((rows - 0.5) / 0.16) ** 4) - ((columns - 0.5) / 0.16) ** 4)
    return camera_counts(random, inside * 300 * numpy.exp(0.5 * tissue) + 0.5, 2.1, 100, 1.6, 16)


def diffraction(random):
    """Counted photons: mostly 0 and 1, rings, and peaks of a thousand, 16 bits."""
    rows, columns = grid() - 0.5
    radius = numpy.hypot(rows, columns)
    rings = sum(numpy.exp(-(((radius - place) / 0.004) ** 2)) for place in (0.12, 0.2, 0.27, 0.38))
    expected = 0.05 + 0.8 * numpy.exp(-radius / 0.08) + 0.5 * rings
    peaks = blobs(random, 150, 1.2, 400)
    return numpy.minimum(random.poisson(expected + peaks), 65535).astype("uint16")


def tomography(random):
    """Hounsfield units of a body in air: int16 from -1024, noise as reconstruction leaves it, some 11 bits."""
    rows, columns = grid() - 0.5
    body = numpy.hypot(rows / 0.32, columns / 0.44) < 1
    picture = numpy.where(body, 40.0, -1000.0)
    for _ in range(14):
        top, left = random.uniform(-0.2, 0.2, 2)
        organ = numpy.hypot((rows - top) / random.uniform(0.02, 0.1), (columns - left) / random.uniform(0.02, 0.1)) < 1
        picture[organ & body] = random.choice([-850, -90, 20, 60, 120, 700])
    noise = ndimage.gaussian_filter(random.normal(size=picture.shape), 0.8) * 55
    noisy = ndimage.gaussian_filter(picture, 0.9) + numpy.where(body, noise, noise / 3)
    return numpy.clip(numpy.rint(noisy), -1024, 3071).astype("int16")


def linear_light(photograph):
    """Returns: 0 to 1 in proportion to light, of 8 bits as screens take them."""
    share = photograph / 255
    return numpy.where(share <= 0.04045, share / 12.92, ((share + 0.055) / 1.055) ** 2.4)


def satellite(random):
    """Real textures in linear light under slow changes of brightness, 12 bits."""
    from skimage import data

    texture = numpy.block([[data.grass(), data.gravel()], [data.brick(), data.camera()]])[:SIDE, :SIDE]
    slow = ndimage.gaussian_filter(random.normal(size=(SIDE, SIDE)), 120, mode="wrap")
    light = linear_light(texture) * (1 + 0.3 * slow / abs(slow).max())
    return camera_counts(random, 9000 * light + 300, 0.3, 60, 1, 12)


def astronomy(random):
    """The noise of the sky and stars of all magnitudes, some too bright, 16 bits."""
    places = random.integers(0, SIDE, (2, 900))
    stars = numpy.zeros((SIDE, SIDE))
    numpy.add.at(stars, tuple(places), random.pareto(0.9, 900) * 3000)
    sharp, wide = (ndimage.gaussian_filter(stars, radius, mode="wrap") for radius in (1.6, 5))
    return camera_counts(random, 250 + 0.85 * sharp + 0.15 * wide, 1.6, 1000, 8, 16)


def labels(random):
    """Numbers of cells, as segmentation gives them, 16 bits."""
    seeds = numpy.zeros((SIDE, SIDE), "int32")
    places = random.integers(0, SIDE, (2, 600))
    seeds[tuple(places)] = random.permutation(600) + 1
    distance, nearest = ndimage.distance_transform_edt(seeds == 0, return_indices=True)
    return numpy.where(distance < 24, seeds[tuple(nearest)], 0).astype("uint16")


def electrons(random):
    """Membranes and grain, 8 bits."""
    smooth = [ndimage.gaussian_filter(random.normal(size=(SIDE, SIDE)), radius, mode="wrap") for radius in (3, 14)]
    fine, coarse = (picture / picture.std() for picture in smooth)
    picture = 165 - 75 * numpy.exp(-((coarse / 0.12) ** 2)) + 12 * fine
    grain = ndimage.gaussian_filter(random.normal(size=picture.shape), 0.6) * 22
    return numpy.clip(numpy.rint(picture + grain), 0, 255).astype("uint8")


GENERATED = {
    "fluorescence, 12 bits": fluorescence,
    "light sheet, background": light_sheet,
    "diffraction, counts": diffraction,
    "tomography, int16": tomography,
    "satellite, 12 bits": satellite,
    "astronomy, 16 bits": astronomy,
    "labels, 16 bits": labels,
    "electron microscope, 8 bits": electrons,
}


def stacks():
    """Yields: the name of each stack, and its images."""
    for seed, (name, make) in enumerate(GENERATED.items()):
        random = numpy.random.default_rng(seed)
        yield name, [make(random) for _ in range(FRAMES)]
    from skimage import data

    yield "photographs, 8 bits", [getattr(data, name)() for name in GRAY_PHOTOGRAPHS]
    yield "photographs, RGB", [getattr(data, name)() for name in COLOUR_PHOTOGRAPHS]
