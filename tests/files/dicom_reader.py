"""pydicom's side of the DICOM reader tests. Each case line "id op path [arg]" is answered with
an array, x fastest, in native byte order:

  pixels PATH     the stored samples, frames last
  scaled PATH     the samples through apply_modality_lut, as float32
  rgb PATH C      colour channel C, converted to RGB first when the file is YBR
  tiles PATH N    the first N tiles of a mosaic image of N x N grid cells, as slices
"""
import math
import warnings

import numpy as np
import pydicom
from pydicom.pixel_data_handlers.util import apply_modality_lut, convert_color_space

import peer

warnings.simplefilter("ignore")


def xfirst(a):
    a = np.asarray(a)
    return a.astype(a.dtype.newbyteorder("=")).T


def compute(arrays, op, args):
    ds = pydicom.dcmread(args[0])
    a = ds.pixel_array
    if op == "pixels":
        return xfirst(a)
    if op == "scaled":
        return xfirst(apply_modality_lut(a, ds).astype(np.float32))
    if op == "rgb":
        if ds.PhotometricInterpretation.startswith("YBR"):
            a = convert_color_space(a, ds.PhotometricInterpretation, "RGB")
        return xfirst(a[..., int(args[1])])
    if op == "tiles":
        n = int(args[1])
        grid = math.ceil(math.sqrt(n))
        h, w = a.shape[0] // grid, a.shape[1] // grid
        tiles = [a[(k // grid) * h:(k // grid + 1) * h, (k % grid) * w:(k % grid + 1) * w]
                 for k in range(n)]
        return xfirst(np.stack(tiles))
    raise ValueError(op)


peer.run(compute)
