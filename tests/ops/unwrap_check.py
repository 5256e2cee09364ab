"""References for the unwrap tests: scikit-image's unwrap_phase and numpy.unwrap.

Usage: unwrap_check.py DIR, with the arrays and the case lines (see peer.py):
  "id skimage NAME"       unwrap_phase of NAME (2-D or 3-D, radians), as float64
  "id numpy NAME AXIS"    numpy.unwrap of NAME along AXIS (0 x ... 5 v); a complex NAME is
                          read as its phase; float64 in, float64 out for float64, else float32
"""
import numpy as np
from skimage.restoration import unwrap_phase

import peer


def reference(arrays, op, args):
    a = arrays[args[0]]
    if op == "skimage":
        return unwrap_phase(np.squeeze(a).astype(np.float64)).reshape(a.shape)
    if op == "numpy":
        axis = int(args[1])
        if np.iscomplexobj(a):
            a = np.angle(a)
        six = a.reshape(a.shape + (1,) * (6 - a.ndim))
        return np.unwrap(six, axis=axis).reshape(a.shape)
    raise ValueError(op)


if __name__ == "__main__":
    peer.run(reference)
