"""The NumPy side of the binary and text file tests.

Cases, one a line of cases.txt:
  id write DTYPE BIG x y z t OFFSET s0 s1 s2 s3 PATH
      writes random samples of DTYPE (a NumPy name) in the skipped layout (OFFSET bytes of
      header, s0 after every x element, s1 after every line, s2 after every plane, s3 after
      every volume), big-endian when BIG is 1, and answers the samples as id.
  id read DTYPE BIG COUNT PATH
      reads COUNT components of DTYPE from PATH and answers them in native order.
  id text PATH
      reads a text file with numpy.loadtxt (blank lines between planes skipped).
"""
import zlib

import numpy as np

import peer


def write(dtype, big, dims, offset, skips, path):
    rng = np.random.default_rng(zlib.crc32(path.encode()))
    x, y, z, t = dims
    native = np.dtype(dtype)
    if native.kind == "f":
        data = rng.standard_normal((t, z, y, x)).astype(native)
    else:
        info = np.iinfo(native)
        data = rng.integers(info.min, info.max, size=(t, z, y, x), dtype=native, endpoint=True)
    stored = data.astype(native.newbyteorder(">" if big else "<"))
    junk = lambda n: rng.integers(0, 256, size=n, dtype=np.uint8).tobytes()
    out = bytearray(junk(offset))
    for ti in range(t):
        for zi in range(z):
            for yi in range(y):
                for xi in range(x):
                    out += stored[ti, zi, yi, xi : xi + 1].tobytes() + junk(skips[0])
                out += junk(skips[1])
            out += junk(skips[2])
        out += junk(skips[3])
    open(path, "wb").write(bytes(out))
    return data.transpose(3, 2, 1, 0)


def compute(arrays, op, args):
    if op == "write":
        dtype, big = args[0], args[1] == "1"
        dims = [int(v) for v in args[2:6]]
        offset = int(args[6])
        skips = [int(v) for v in args[7:11]]
        return write(dtype, big, dims, offset, skips, args[11])
    if op == "read":
        dtype = np.dtype(args[0]).newbyteorder(">" if args[1] == "1" else "<")
        data = np.fromfile(args[3], dtype=dtype)
        if data.size != int(args[2]):
            raise ValueError(f"{args[3]}: {data.size} components, not {args[2]}")
        return data.astype(np.dtype(args[0]))
    if op == "text":
        return np.loadtxt(args[0], ndmin=2).reshape(-1)
    raise ValueError(op)


peer.run(compute)
