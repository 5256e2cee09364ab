"""Times numpy.ascontiguousarray(numpy.transpose(...)) on a 256 x 256 x 64 x 8 float32 array.

Prints two lines, milliseconds per call, best of several: the order "tzyx" (all four
directions reversed) and the exchange of x and y.
"""
import time

import numpy as np

# C order (t, z, y, x): x runs fastest, as in the program's arrays.
a = np.random.default_rng(1).random((8, 64, 256, 256), dtype=np.float32)


def best(axes, runs=5):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        np.ascontiguousarray(np.transpose(a, axes))
        times.append(time.perf_counter() - start)
    return min(times) * 1e3


print(best((3, 2, 1, 0)))
print(best((0, 1, 3, 2)))
