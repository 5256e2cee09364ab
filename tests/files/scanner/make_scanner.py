"""Scanner files for the tests, written from the layouts of the formats with struct and NumPy,
and what a reader must make of each.

    make_scanner.py FOLDER            the files, manifest.txt and the expected arrays
    make_scanner.py FOLDER corpus DIR also the smallest file of each kind under DIR/<kind>/
    make_scanner.py FOLDER parse FILE checks an "IPG0" file and writes its points as "points"

manifest.txt holds one line per file: "name kind key=value ...". Expected arrays use the
exchange format of tests/peer.py (NAME.bin, NAME.shape, x fastest), complex integers as
"cint16"/"cint32" with i and q interleaved. Float fields are given as their 32-bit patterns
in hex, so a reader's steps are compared bit for bit.
"""
import os
import struct
import sys

import numpy as np

RNG = np.random.default_rng(20241)

# Raw revisions: name, first word, big-endian, pool bytes, log name, field layout, slice table
# offset and entry bytes, how the step's slice count is stored, the image block offsets.
OLD_FIELDS = dict(flag=56, slices=68, echoes=70, baselines=76, point=82, xres=102, yres=104,
                  first=200, last=202)
NEW_FIELDS = dict(flag=132, slices=144, echoes=146, baselines=152, point=158, xres=178,
                  yres=180, first=264, last=266)


def block(sx, sy, th, gap, exam, series, image, dx=None, dy=None):
    return dict(sx=sx, sy=sy, th=th, gap=gap, exam=exam, series=series, image=image, dx=dx,
                dy=dy)


REVS = {
    "5x": (5.2, True, 39940, "5x", "old", 10240, 40, "s16",
           block(38966, 38970, 38942, 39032, 38924, 38926, 38928, 38946, 38948)),
    "7x": (7.0, True, 39984, "7x", "old", 10240, 40, "s16",
           block(59472, 59476, 59448, 59540, 59428, 59430, 59432, 59452, 59454)),
    "8x": (8.5, True, 60464, "8x", "old", 10240, 40, "s16",
           block(38992, 38996, 38968, 39060, 38948, 38950, 38952, 38972, 38974)),
    "9x": (9.0, False, 61464, "9x", "mid", 10240, 40, "swapped",
           block(59980, 59984, 59956, 60048, 59936, 59938, 59940)),
    "11x": (11.0, False, 66072, "11x", "mid", 10240, 44, "u16",
            block(64920, 64924, 64548, 64552, 65200, 65212, 65214)),
    "14x": (14.3, False, 145908, "14x", "mid", 34816, 48, "u16",
            block(64920, 64924, 64548, 64552, 65200, 65212, 65214)),
    "15": (15.0, False, 145908, "24x", "mid", 34816, 48, "s16",
           block(144308, 144312, 143936, 143940, 144884, 144896, 144752)),
    "16x": (16.7, False, 145908, "16x", "mid", 34816, 48, "s16",
            block(144356, 144360, 143984, 143988, 144932, 144944, 144800)),
    "20": (20.0, False, 149788, "24x", "mid", 36864, 48, "s16",
           block(148028, 148032, 147656, 147660, 148712, 148724, 148576)),
    "24x": (24.0, False, 157276, "24x", "mid", 36864, 48, "s16",
            block(148028, 148032, 147656, 147660, 148712, 148724, 148576)),
    "26x": (26.0, False, 213684, "26x", "new", 36864, 72, "s16",
            block(198868, 198872, 198496, 198500, 199552, 199564, 199416)),
    "27": (27.0, False, 219828, "27", "new", 36864, 72, "s16",
           block(198868, 198872, 198496, 198500, 199552, 199564, 199416)),
    "28": (28.0019, False, 228020, "28", "new", 36864, 76, "s16",
           block(207060, 207064, 206688, 206692, 207744, 207756, 207608)),
    "28.002": (28.0021, False, 228020, "28.002", "new", 36864, 76, "u32",
               block(207060, 207064, 206688, 206692, 207744, 207756, 207608)),
}

manifest = []


def note(name, kind, **fields):
    manifest.append(" ".join([name, kind] + [f"{k}={v}" for k, v in fields.items()]))


def bits(v):
    return "%08x" % struct.unpack("<I", struct.pack("<f", np.float32(v)))[0]


def write(folder, name, data):
    with open(os.path.join(folder, name), "wb") as f:
        f.write(bytes(data))


def save_array(folder, name, array, dtype_name):
    """array: C order, last axis i/q for complex; shape x first in the .shape file."""
    array = np.ascontiguousarray(array)
    array.tofile(os.path.join(folder, name + ".bin"))
    shape = list(array.shape[::-1])
    if dtype_name.startswith("c"):
        shape = shape[1:]
    shape += [1] * (6 - len(shape))
    with open(os.path.join(folder, name + ".shape"), "w") as f:
        f.write(" ".join([dtype_name] + [str(v) for v in shape]) + "\n")


class Buffer:
    def __init__(self, size, big):
        self.b = bytearray(size)
        self.e = ">" if big else "<"

    def put(self, fmt, at, value):
        struct.pack_into(self.e + fmt, self.b, at, value)

    def get(self, fmt, at):
        return struct.unpack_from(self.e + fmt, self.b, at)[0]


# ---- raw files ---------------------------------------------------------------------------


def raw_file(folder, name, rev, x=6, yres=4, echoes=2, first=1, last=2, baselines=2, point=2,
             flag=0, slices=(2, 1), count=None, long7=False, cut=None):
    """Writes one raw file; notes its header and writes the arrays a load must give."""
    value, big, pool, log, layout, table, entry, count_kind, blk = REVS[rev]
    f = OLD_FIELDS if layout in ("old", "mid") else NEW_FIELDS
    p = Buffer(pool, big)
    p.put("f", 0, value)
    p.put("H" if layout == "old" else "I", f["flag"], flag)
    if count is None:
        count = len(slices)
    if count_kind == "u32":
        p.put("I", 3200, count)
        p.put("H", f["slices"], 0)
    else:
        p.put("H", f["slices"], count & 0xFFFF)
    p.put("h", f["echoes"], echoes)
    p.put("h", f["baselines"], baselines)
    p.put("H", f["point"], point)
    p.put("H", f["xres"], x)
    p.put("H", f["yres"], yres)
    p.put("h", f["first"], first)
    p.put("h", f["last"], last)
    for k, s in enumerate(slices):
        p.put("h", table + k * entry + 2, s)
    # One entry past the count, which must not be read.
    if count == len(slices) and table + len(slices) * entry + 4 <= pool:
        p.put("h", table + len(slices) * entry + 2, 999)

    th = np.float32(RNG.uniform(1, 5))
    gap = np.float32(RNG.uniform(0, 1))
    exam, series, image = 1234, 17, 42
    if blk["dx"] is not None:
        values = dict(sx=np.float32(RNG.uniform(100, 300)), sy=np.float32(RNG.uniform(100, 300)))
    else:
        values = dict(sx=np.float32(RNG.uniform(0.5, 2)), sy=np.float32(RNG.uniform(0.5, 2)))
    wide = rev in ("15", "16x", "20", "24x", "26x", "27", "28", "28.002")
    if wide:
        series, image = -5, 70000

    comp = np.dtype(np.int16 if point == 2 else np.int32)
    nz = max([0] + list(slices[:count]))
    u = last - first + 1
    lines = yres if baselines >= 0 else yres - 1
    info = np.iinfo(comp)
    samples = RNG.integers(info.min, info.max, size=(u, nz, echoes, lines, x, 2),
                           endpoint=True).astype(comp)
    samples.flat[::7] = info.max
    samples.flat[3::7] = info.min
    data = bytearray(samples.astype(comp.newbyteorder(">" if big else "<")).tobytes())
    whole = p.b + data

    def put_block(buf, fmt, at, v):
        struct.pack_into((">" if big else "<") + fmt, buf, at, v)

    if rev != "7x" or long7:
        target = whole
        put_block(target, "f", blk["th"], th)
        put_block(target, "f", blk["gap"], gap)
        put_block(target, "f", blk["sx"], values["sx"])
        put_block(target, "f", blk["sy"], values["sy"])
        if blk["dx"] is not None:
            put_block(target, "h", blk["dx"], 256)
            put_block(target, "h", blk["dy"], 192)
        put_block(target, "H", blk["exam"], exam)
        if wide:
            put_block(target, "h", blk["series"], series)
            put_block(target, "i", blk["image"], image)
        else:
            put_block(target, "H", blk["series"], series)
            put_block(target, "H", blk["image"], image)
    if rev == "7x" and long7:
        assert len(whole) >= blk["gap"] + 4
    if rev == "7x" and not long7:
        assert len(whole) < blk["gap"] + 4

    # What a reader must see, from the bytes as written (7x keeps its block in the samples).
    e = ">" if big else "<"
    samples = np.frombuffer(bytes(whole[pool:]), dtype=comp.newbyteorder(e)).reshape(
        samples.shape).astype(comp)
    def at(fmt, o):
        return struct.unpack_from(e + fmt, whole, o)[0]

    if rev == "7x" and not long7:
        sx = sy = sz = np.float32(1)
        exam = series = image = 0
    else:
        thick, gp = np.float32(at("f", blk["th"])), np.float32(at("f", blk["gap"]))
        if blk["dx"] is not None:
            sx = np.float32(1) / (np.float32(at("f", blk["sx"])) * np.float32(at("h", blk["dx"])))
            sy = np.float32(1) / (np.float32(at("f", blk["sy"])) * np.float32(at("h", blk["dy"])))
        else:
            sx, sy = np.float32(at("f", blk["sx"])), np.float32(at("f", blk["sy"]))
        raw_count = struct.unpack_from(e + "H", whole, f["slices"])[0]
        step_count = {"s16": np.int16(np.uint16(raw_count).view(np.int16)),
                      "u16": raw_count,
                      "swapped": np.uint16(((raw_count & 0xFF) << 8) | (raw_count >> 8)).view(
                          np.int16),
                      "u32": struct.unpack_from(e + "I", whole, 3200)[0]}[count_kind]
        if flag & 64:
            sz = np.float32(1) / (np.float32(step_count) * thick)
        else:
            sz = thick + gp
        exam = at("H", blk["exam"])
        series = at("h", blk["series"]) if wide else at("H", blk["series"])
        image = at("i", blk["image"]) if wide else at("H", blk["image"])

    # z from the table as the file holds it: the first `count` entries that lie in the pool.
    table_count = count if count_kind in ("u16", "u32") else max(
        0, struct.unpack_from(e + "h", whole, f["slices"])[0])
    z = 0
    for k in range(table_count):
        o = table + k * entry + 2
        if o + 2 > pool:
            break
        z = max(z, struct.unpack_from(e + "h", whole, o)[0])
    assert z == nz, (name, z, nz)

    if cut is not None:
        whole = whole[:cut]
    write(folder, name, whole)
    note(name, "raw", rev=rev, log=log, pool=pool, x=x, y=yres - 1, z=nz, t=echoes, u=u,
         type="ci2" if point == 2 else "ci4", sx=bits(sx), sy=bits(sy), sz=bits(sz),
         exam=exam, series=series, image=image, volume=flag & 64, swap=int(big),
         baselines=baselines, bytes=len(whole))

    # Arrays in (u, t, z, y, x, iq) order, the array's own nesting.
    images = samples[:, :, :, (1 if baselines >= 0 else 0):, :, :].transpose(0, 2, 1, 3, 4, 5)
    kind = "cint16" if point == 2 else "cint32"
    save_array(folder, name + "_plain", images, kind)
    if baselines > 0:
        base = samples[:, :, :, 0:1, :, :].transpose(0, 2, 1, 3, 4, 5)
        with np.errstate(over="ignore"):
            save_array(folder, name + "_add", (images + base).astype(comp), kind)
            save_array(folder, name + "_subtract", (images - base).astype(comp), kind)
    return len(whole)


def raw_files(folder):
    for rev in REVS:
        raw_file(folder, "raw_" + rev, rev, long7=False)
    # Both word orders of the count, volumes, point sizes, receivers and baselines.
    raw_file(folder, "raw_7x_long", "7x", x=32, yres=11, point=4, long7=True)
    raw_file(folder, "raw_5x_volume", "5x", flag=0x41, slices=(1, 3, 2))
    raw_file(folder, "raw_9x_volume", "9x", flag=64, count=0x0100, slices=(1, 2) * 128)
    raw_file(folder, "raw_11x_wide_count", "11x", flag=64, count=0x8002, slices=(2, 1))
    raw_file(folder, "raw_28.002_volume", "28.002", flag=64 | 4, slices=(3, 1, 2))
    raw_file(folder, "raw_24x_i4", "24x", point=4, baselines=1, first=3, last=5, echoes=1)
    raw_file(folder, "raw_26x_point7", "26x", point=7, baselines=1, slices=(1,))
    raw_file(folder, "raw_16x_zero_baselines", "16x", baselines=0)
    raw_file(folder, "raw_20_no_baselines", "20", baselines=-1)
    raw_file(folder, "raw_8x_y1", "8x", yres=1, baselines=0)
    raw_file(folder, "raw_14x_no_slices", "14x", slices=())
    raw_file(folder, "raw_27_pool_only", "27", cut=REVS["27"][2])
    # Words that are no revision.
    for name, word in (("raw_6.5_big", struct.pack(">f", 6.5)),
                       ("raw_6.5_little", struct.pack("<f", 6.5)),
                       ("raw_nan", struct.pack("<f", float("nan"))),
                       ("raw_inf", struct.pack(">f", float("inf"))),
                       ("raw_12", struct.pack("<f", 12.0))):
        write(folder, name, word + bytes(240000))
        note(name, "raw_rejected")


# ---- image files ---------------------------------------------------------------------------


def image_file(folder, name, form, rev=2, x=12, y=9):
    """form: imgf (case 1), 0xC4FD0708 style words (case 2), 0x24FE0708 (case 3), tail (4)."""
    big = form in ("imgf", "tail")
    size = 9452 + 2 * x * y + 64
    b = Buffer(size, big)
    if form == "imgf":
        b.b[0:4] = b"IMGF"
        b.put("i", 4, 3000)
        b.put("i", 8, x)
        b.put("i", 12, y)
        b.put("H", 52, rev)
        if rev == 2:
            blk, shifted, data_at = 2308, True, 8432
        else:
            blk, shifted, data_at = 700, False, 3000
            b.put("I", 148, blk)
    elif form == "tail":
        b.b[0:4] = b"\x00\x01\x02\x03"
        b.b[3228:3232] = b"IMGF"
        b.put("I", 3232, 2000)
        b.put("i", 3236, x)
        b.put("i", 3240, y)
        blk, shifted, data_at = 2184, True, 5228
    else:
        struct.pack_into(">I", b.b, 0, form)
        b.put("i", 4, 4100)
        b.put("i", 8, x)
        b.put("i", 12, y)
        b.put("H", 52, rev)
        blk, shifted = 2816, True
        data_at = 9452 if form == 0x24FE0708 else 4100
    th, sx, sy, gap = (np.float32(v) for v in RNG.uniform(0.5, 4, 4))
    off = dict(th=28, sx=52, sy=56, gap=120) if shifted else dict(th=26, sx=50, sy=54, gap=116)
    b.put("f", blk + off["th"], th)
    b.put("f", blk + off["sx"], sx)
    b.put("f", blk + off["sy"], sy)
    b.put("f", blk + off["gap"], gap)
    exam, series, image = 4321, 7, 300
    for k, v in enumerate((exam, series, image)):
        struct.pack_into(">H", b.b, blk + 8 + 2 * k, v)
    pixels = RNG.integers(-32768, 32767, size=(y, x), endpoint=True).astype(np.int16)
    b.b[data_at:data_at + 2 * x * y] = pixels.astype(">i2" if big else "<i2").tobytes()
    write(folder, name, b.b)
    note(name, "image", x=x, y=y, sx=bits(sx), sy=bits(sy), sz=bits(th + gap), exam=exam,
         series=series, image=image, swap=int(big), offset=data_at, bytes=size)
    save_array(folder, name + "_plain", pixels, "int16")


def image_files(folder):
    image_file(folder, "image_imgf_rev2", "imgf", rev=2)
    image_file(folder, "image_imgf_rev3", "imgf", rev=3)
    image_file(folder, "image_c4fd0708", 0xC4FD0708)
    image_file(folder, "image_e4fd0708", 0xE4FD0708)
    image_file(folder, "image_24fe0708", 0x24FE0708)
    image_file(folder, "image_tail", "tail")
    bad = Buffer(200, True)
    bad.b[0:4] = b"IMGF"
    bad.put("H", 52, 5)
    write(folder, "image_imgf_rev5", bad.b)
    note("image_imgf_rev5", "image_rejected", text="unknown rev of 5x header")
    bad = Buffer(200, False)
    struct.pack_into(">I", bad.b, 0, 0x00FD0708)
    bad.put("H", 52, 3)
    write(folder, "image_little_rev3", bad.b)
    note("image_little_rev3", "image_rejected", text="unknown rev of 11x header")
    write(folder, "image_unknown", bytes(4000))
    note("image_unknown", "image_rejected", text="unknown header")


# ---- pulsegen files ------------------------------------------------------------------------


def ipg0(points):
    n = len(points)
    m = n + (n & 1)
    padded = np.zeros(m, dtype=">i2")
    padded[:n] = points
    header = [0x49504730, 2 * m + 68, 1, 2 * m + 68] + [0] * 12
    body = struct.pack(">16I", *header) + padded.tobytes()
    words = np.frombuffer(body, dtype=">u4").astype(np.uint64)
    return body + struct.pack(">I", (~int(words.sum()) & 0xFFFFFFFF))


def parse_ipg0(data):
    """The points of an "IPG0" file; raises on any fault of header, padding or checksum."""
    header = struct.unpack_from(">16I", data, 0)
    if header[0] != 0x49504730 or header[2] != 1 or header[1] != header[3]:
        raise ValueError(f"header words {header[:4]}")
    if any(header[4:]):
        raise ValueError("header words 4 to 15 not 0")
    if header[1] != len(data) or len(data) % 4:
        raise ValueError(f"size word {header[1]} for {len(data)} bytes")
    words = np.frombuffer(data, dtype=">u4").astype(np.uint64)
    if (int(words[:-1].sum()) + int(words[-1])) & 0xFFFFFFFF != 0xFFFFFFFF:
        raise ValueError("checksum")
    return np.frombuffer(data[64:-4], dtype=">i2").astype(np.int16)


def pulsegen_files(folder):
    for name, n in (("pulsegen_ipg0_even", 10), ("pulsegen_ipg0_odd", 7)):
        points = RNG.integers(-32768, 32767, size=n, endpoint=True).astype(np.int16)
        data = ipg0(points)
        write(folder, name, data)
        m = n + (n & 1)
        note(name, "pulsegen", type="i2", x=m, offset=64, bytes=len(data))
        padded = np.zeros(m, dtype=np.int16)
        padded[:n] = points
        save_array(folder, name + "_plain", padded, "int16")
    n = 200
    iq = RNG.integers(-32768, 32767, size=(n, 2), endpoint=True).astype(np.int16)
    words = [0x44465432] + [0] * 15
    halves = [0, n] + [0] * 14
    data = bytearray(struct.pack(">16I", *words) + struct.pack(">16H", *halves))
    data += bytes(608 + 2 * n - len(data))
    data[96:96 + 2 * n] = iq[:, 0].astype(">i2").tobytes()
    data[608:608 + 2 * n] = iq[:, 1].astype(">i2").tobytes()
    write(folder, "pulsegen_dft2", data)
    note("pulsegen_dft2", "pulsegen", type="ci2", x=n, offset=96, bytes=len(data))
    save_array(folder, "pulsegen_dft2_plain", iq, "cint16")
    huge = bytearray(data)
    struct.pack_into(">H", huge, 66, 65535)
    write(folder, "pulsegen_dft2_huge", huge)
    note("pulsegen_dft2_huge", "pulsegen_unloadable", type="ci2", x=65535)
    write(folder, "pulsegen_unknown", b"IPG1" + bytes(100))
    note("pulsegen_unknown", "pulsegen_rejected", text="unknown file type")


# ---- plotpulse files -----------------------------------------------------------------------

UNITS = (2, 2, 2, 1, 1, 1, 1)


def instruction(duration, end=False, amplitude=0, address=0):
    """Words for a wanted duration: (256 - low byte of w0) * 65536 - w1."""
    hi = (duration + 65535) // 65536
    w1 = hi * 65536 - duration
    w0 = (256 - hi) & 0xFF
    if end:
        w0 |= 0x100
    return struct.pack(">4H", w0 | 0x200, w1, amplitude & 0xFFFF, address)


def expand(table, streams, x, z):
    """The samples of the streams: channel c of plane p, x samples, from the instructions."""
    out = np.zeros((z, 7, x), dtype=np.int16)
    for c, stream in enumerate(streams):
        plane, pos = 0, 0
        for k in range(len(stream) // 8):
            w0, w1, w2, w3 = struct.unpack_from(">4H", stream, 8 * k)
            duration = ((256 - (w0 & 0xFF)) * 65536 - w1) & 0xFFFFFFFF
            count = duration * UNITS[c]
            if w0 & 0x100:
                plane, pos = plane + 1, 0
                continue
            if w3 == 0:
                pos += count
                continue
            amp = np.int32(np.int16(np.uint16(w2).view(np.int16)))
            i = w3
            while True:
                entry = np.int32(table[i])
                value = np.array(((entry & ~np.int32(1)) * amp) >> 15, dtype=np.int32).astype(np.int16)
                out[plane, c, pos:pos + count] = value
                pos += count
                if entry & 1:
                    break
                i += 1
    return out


def plot_file(table, streams, extra=0, pdp=False):
    """The table (16-bit entries) and streams behind the nine words, plain or "PD/P"."""
    table_bytes = np.asarray(table, dtype=">i2").tobytes()
    words = [len(table_bytes)] + [len(s) for s in streams] + [extra]
    body = bytearray(80) + table_bytes + b"".join(streams) + bytes(extra)
    if pdp:
        # The words little-endian at 333; the plain form's first word is "PD/P".
        assert len(body) <= 333
        body += bytes(369 - len(body))
        struct.pack_into("<9i", body, 333, *words)
        body[0:4] = b"PD/P"
    else:
        struct.pack_into(">9i", body, 0, *words)
    return bytes(body)


def block_lengths(table, streams):
    """Longest block and most blocks, as the header scan counts them."""
    longest, most = 0, 0
    for c, s in enumerate(streams):
        length, count = 0, 0
        for k in range(len(s) // 8):
            w0, w1, w2, w3 = struct.unpack_from(">4H", s, 8 * k)
            duration = (256 - (w0 & 0xFF)) * 65536 - w1
            if w0 & 0x100:
                longest = max(longest, length)
                length, count = 0, count + 1
            elif w3 == 0:
                length += duration * UNITS[c]
            else:
                i = w3
                while True:
                    length += duration * UNITS[c]
                    if table[i] & 1:
                        break
                    i += 1
        most = max(most, count)
    return longest, most


def plotpulse_files(folder):
    # The file holds tableWords bytes, that is the first half of the tableWords entries the
    # reader keeps; the other half reads as 0.
    stored = [0, 100, 2000, -3000, 4001, -32767, 32767, 9, -32768, 3]
    table = stored + [0] * len(stored)
    streams = [
        instruction(3, amplitude=16384, address=1) + instruction(2) + instruction(1, end=True)
        + instruction(4, amplitude=-32768, address=8) + instruction(1, end=True)
        + instruction(2, amplitude=-32768, address=4) + instruction(1, end=True),
        instruction(5) + instruction(1, end=True),
        b"",
        instruction(2, amplitude=32767, address=2) + instruction(1, end=True)
        + instruction(1, end=True) + instruction(6, amplitude=12345, address=5)
        + instruction(1, end=True),
        # No block end: its samples stay in plane 0.
        instruction(1, amplitude=-1, address=3) + b"\x01\x02\x03",
        instruction(65536 + 7) + instruction(1, end=True),
        instruction(9, amplitude=-20000, address=6) + instruction(1, end=True)
        + instruction(3, amplitude=77, address=7) + instruction(1, end=True),
    ]
    x, z = block_lengths(table, streams)
    data = plot_file(stored, streams, extra=5)
    write(folder, "plotpulse_plain", data)
    note("plotpulse_plain", "plotpulse", x=x, z=z, bytes=len(data))
    save_array(folder, "plotpulse_plain_plain", expand(table, streams, x, z), "int16")
    small = [instruction(3, amplitude=1000, address=1) + instruction(1, end=True)] * 7
    pdp = plot_file(stored, small, pdp=True)
    write(folder, "plotpulse_pdp", pdp)
    x, z = block_lengths(table, small)
    note("plotpulse_pdp", "plotpulse_unloadable", x=x, z=z, bytes=len(pdp))

    def bad(name, words, size=400):
        body = bytearray(size)
        struct.pack_into(">9i", body, 0, *words)
        write(folder, name, body)
        note(name, "plotpulse_rejected", text="invalid header")

    bad("plotpulse_negative", [4, 8, -8, 0, 0, 0, 0, 0, 0])
    bad("plotpulse_overflow", [4, 0x7FFFFFFF, 0x7FFFFFFF, 2, 0, 0, 0, 0, 0])
    bad("plotpulse_too_long", [4, 200, 200, 0, 0, 0, 0, 0, 0])
    past = plot_file([1, 1], [instruction(2, amplitude=5, address=5)] + [b""] * 6)
    write(folder, "plotpulse_past_table", past)
    note("plotpulse_past_table", "plotpulse_rejected", text="invalid header")
    # A waveform without an entry that ends it runs off the table.
    endless = plot_file([2, 4], [instruction(2, amplitude=5, address=1)] + [b""] * 6)
    write(folder, "plotpulse_endless", endless)
    note("plotpulse_endless", "plotpulse_rejected", text="invalid header")
    # A run behind the last block end: the header sees one block of 2 samples, the expansion
    # would write past plane 0.
    over = plot_file([0, 0], [instruction(1) + instruction(1, end=True) + instruction(3)]
                     + [b""] * 6)
    write(folder, "plotpulse_overrun", over)
    note("plotpulse_overrun", "plotpulse_unloadable", x=2, z=1, bytes=len(over))
    # Blocks without samples: no x, two planes.
    empty = plot_file([0, 0], [instruction(1, end=True) * 2] + [b""] * 6)
    write(folder, "plotpulse_empty_blocks", empty)
    note("plotpulse_empty_blocks", "plotpulse_empty", x=0, z=2, bytes=len(empty))


def main():
    folder = sys.argv[1]
    if len(sys.argv) > 3 and sys.argv[2] == "parse":
        points = parse_ipg0(open(sys.argv[3], "rb").read())
        save_array(folder, "points", points, "int16")
        return
    os.makedirs(folder, exist_ok=True)
    raw_files(folder)
    image_files(folder)
    pulsegen_files(folder)
    plotpulse_files(folder)
    with open(os.path.join(folder, "manifest.txt"), "w") as f:
        f.write("\n".join(manifest) + "\n")
    if len(sys.argv) > 3 and sys.argv[2] == "corpus":
        seeds = {"raw": ["raw_5x", "raw_7x", "raw_8x_y1", "raw_6.5_big"],
                 "image": ["image_imgf_rev2", "image_imgf_rev3", "image_c4fd0708",
                           "image_24fe0708", "image_tail", "image_unknown"],
                 "pulsegen": ["pulsegen_ipg0_odd", "pulsegen_dft2", "pulsegen_unknown"],
                 "plotpulse": ["plotpulse_plain", "plotpulse_pdp", "plotpulse_overrun",
                               "plotpulse_past_table", "plotpulse_empty_blocks"]}
        for kind, names in seeds.items():
            os.makedirs(os.path.join(sys.argv[3], kind), exist_ok=True)
            for name in names:
                data = open(os.path.join(folder, name), "rb").read()
                write(os.path.join(sys.argv[3], kind), name, data)


if __name__ == "__main__":
    main()
