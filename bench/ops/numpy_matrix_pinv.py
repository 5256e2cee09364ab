"""Peer of bench_matrix: numpy.linalg.pinv on the benchmark's own stack.

Usage: numpy_matrix_pinv.py FILE N. FILE holds N complex64 8 x 8 matrices as the benchmark
stores them (rows fastest, one matrix after the other). Prints the median milliseconds of one
pinv of the whole stack (wall clock, time.perf_counter) and the median processor
milliseconds (time.process_time, all threads), rcond as in the benchmark's minv call.
"""
import statistics
import sys
import time

import numpy as np


def main(path, count):
    raw = np.fromfile(path, dtype=np.complex64).reshape(count, 8, 8)
    # Stored column after column: the matrix is the transpose of each C-order block.
    stack = np.ascontiguousarray(raw.transpose(0, 2, 1))
    np.linalg.pinv(stack, rcond=1e-6)
    wall, cpu = [], []
    for _ in range(7):
        start, start_cpu = time.perf_counter(), time.process_time()
        np.linalg.pinv(stack, rcond=1e-6)
        wall.append(time.perf_counter() - start)
        cpu.append(time.process_time() - start_cpu)
    print(f"{statistics.median(wall) * 1e3:.3f} {statistics.median(cpu) * 1e3:.3f}")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
