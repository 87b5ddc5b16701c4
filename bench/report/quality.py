"""How near an image is to its original: PSNR and SSIM of uint8 samples."""

import math

import numpy
from skimage.metrics import structural_similarity

LARGEST = 255


def psnr(original, image):
    """Returns: decibels over all samples; nothing where the images are the same."""
    error = numpy.square(original.astype("f8") - image).mean()
    return 10 * math.log10(LARGEST**2 / error) if error else None


def ssim(original, image):
    """Returns: structural similarity with the window of its authors, the mean of the planes."""
    planes = {"channel_axis": -1} if original.ndim == 3 else {}
    # Half of the digits take half of the time.
    original, image = (samples.astype("f4") for samples in (original, image))
    return structural_similarity(original, image, data_range=LARGEST, gaussian_weights=True, sigma=1.5,
                                 use_sample_covariance=False, **planes)  # fmt: skip


def point(original, size_bytes, image):
    """Returns: bits per sample, PSNR and SSIM of a stream; nothing where nothing is lost."""
    if image.shape != original.shape:
        raise ValueError(f"{image.shape} came back for {original.shape}")
    decibels = psnr(original, image)
    if decibels is None:
        return None
    return [round(8 * size_bytes / original.size, 4), round(decibels, 3), round(float(ssim(original, image)), 5)]
