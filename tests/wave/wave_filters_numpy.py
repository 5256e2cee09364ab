"""NumPy side of the wave filter and frequency estimation tests.

Arrays come x first (peer.py); images here are turned to (y, x) or (z, y, x) for NumPy's
transforms and back before saving. Every filter is written from its formula, independently of
the engine: the cases compare the engine's images with these.
"""
import numpy as np

import peer


def yx(a):
    return np.ascontiguousarray(a.T).astype(np.float64)


def back(a):
    return np.asarray(a).T.astype(np.float32)


def centred_grid(shape, fovs):
    """Frequencies (i - n//2) / fov per axis, as arrays broadcast over (z, y, x)."""
    axes = [(np.arange(n) - n // 2) / f for n, f in zip(shape, fovs)]
    return np.meshgrid(*axes, indexing="ij")


def cos2(nx, ny, nz, fov, v):
    kz, ky, kx = centred_grid((nz, ny, nx), (fov[2], fov[1], fov[0]))
    u = np.array(v, dtype=np.float64)
    u /= np.linalg.norm(u)
    d = kx * u[0] + ky * u[1] + kz * u[2]
    k2 = kx**2 + ky**2 + kz**2
    with np.errstate(invalid="ignore", divide="ignore"):
        f = np.where(d < 0, 0.0, d * d / k2)
    f[k2 == 0] = 1.0
    return np.fft.ifftshift(f)


def sector(nx, ny, fovx, fovy, angle, ncos):
    ky, kx = centred_grid((ny, nx), (fovy, fovx))
    theta = np.radians(angle)
    n = max(ncos, 1.0)
    half = np.pi / (2 * n)
    a1, a2 = theta - half, theta + half
    outside = (kx * np.sin(a1) > ky * np.cos(a1)) | (ky * np.cos(a2) > kx * np.sin(a2))
    phi = np.arctan2(ky, kx) - theta
    if 1 < n < 2:
        phi = (phi + np.pi) % (2 * np.pi) - np.pi
    f = np.where(outside, 0.0, np.cos(n * phi) ** 2)
    f[(kx == 0) & (ky == 0)] = 1.0
    return np.fft.ifftshift(f)


def folded(n):
    i = np.arange(n)
    return np.minimum(i, n - i)


def band(kind, ftype, nx, ny, nz, sy, sz, c0, c1, order):
    """Filter types 2 to 7 on (z, y, x); "real" keeps columns 0..nx/2."""
    fx = folded(nx).astype(np.float64)
    if kind == "real":
        fx = np.arange(nx // 2 + 1, dtype=np.float64)
    fy = folded(ny) * sy
    fz = folded(nz) * sz
    FZ, FY, FX = np.meshgrid(fz, fy, fx, indexing="ij")
    r2 = FX**2 + FY**2 + FZ**2

    def gauss(sigma):
        out = np.ones_like(r2)
        for f in (FX, FY, FZ):
            e = -f * f / (2 * sigma * sigma)
            out *= np.where(e < -20, 0.0, np.exp(e))
        return out

    with np.errstate(divide="ignore", invalid="ignore"):
        if ftype == 2:
            return gauss(c0)
        if ftype == 3:
            return 1 - gauss(c0 / 1.3658)
        if ftype == 4:
            return (1 - gauss(c0 / 1.3658)) * gauss(c1)
        if ftype == 5:
            return 1 / np.sqrt(1 + (r2 / c0**2) ** order)
        if ftype == 6:
            return np.where(r2 > 0, 1 / np.sqrt(1 + (c0**2 / r2) ** order), 0.0)
        q = (c0 * c1 - r2) / (np.sqrt(r2) * (c1 - c0))
        return np.where(r2 > 0, 1 / np.sqrt(1 + q ** (2 * order)), 0.0)


def spatial(img, mask, rx, ry, median):
    ny, nx = img.shape
    out = img.copy()
    for y in range(ny):
        for x in range(nx):
            y0, y1 = max(y - ry // 2, 0), min(y + ry // 2, ny - 1) + 1
            x0, x1 = max(x - rx // 2, 0), min(x + rx // 2, nx - 1) + 1
            vals = img[y0:y1, x0:x1]
            if mask[y, x]:
                vals = vals[mask[y0:y1, x0:x1] != 0]
            vals = vals.ravel()
            if vals.size >= 3:
                out[y, x] = np.sort(vals)[(vals.size - 1) // 2] if median else vals.mean()
    return out


def lognormal_bank(shape, fovs, f, ratio, axes):
    """Lognormal quadrature filters on (z, y, x): one per axis in `axes` (x 0, y 1, z 2), or
    the isotropic one for axis -1."""
    grids = np.meshgrid(*[folded(n) / fv for n, fv in zip(shape, fovs)], indexing="ij")
    idx = np.meshgrid(*[np.arange(n) for n in shape], indexing="ij")
    rho2 = sum(g * g for g in grids)
    c = -0.125 / np.log(ratio)
    with np.errstate(divide="ignore", invalid="ignore"):
        L = np.log(rho2 / (f * f))
        rad = np.where(rho2 > 0, np.exp(L * L * c), 0.0)
    out = []
    dims = len(shape)
    for a in axes:
        if a < 0:
            out.append(rad)
            continue
        ax = dims - 1 - a  # x is the last NumPy axis
        with np.errstate(divide="ignore", invalid="ignore"):
            w = np.where(rho2 > 0, grids[ax] ** 2 / rho2, 0.0)
        keep = idx[ax] <= shape[ax] // 2
        out.append(np.where(keep, rad * w, 0.0))
    return out


def lfe(img, nbands, base, ratio, fovs, complex_pair):
    """The whole estimate: bands of summed envelopes, then the weighted ratio combination."""
    spec = np.fft.fftn(img)
    bands = []
    f = base
    for _ in range(nbands):
        axes = [-1] if complex_pair else list(range(img.ndim))
        filters = lognormal_bank(img.shape, fovs, f, ratio, axes)
        bands.append(sum(np.abs(np.fft.ifftn(spec * h)) for h in filters))
        f *= ratio
    q = np.array(bands)
    r = np.sqrt(ratio)
    fb = base * r * (r * r) ** np.arange(nbands - 1)
    with np.errstate(divide="ignore", invalid="ignore"):
        num = sum(fb[b] * q[b] * q[b + 1] for b in range(nbands - 1))
        den = sum(q[b] ** 2 for b in range(nbands - 1))
        est = num / den
        dev = sum(q[b] ** 2 * (fb[b] * q[b + 1] / q[b] - est) ** 2
                  for b in range(nbands - 1)) / den
        cert = 1 - np.minimum(1, np.sqrt(dev) / est)
    return est, cert


def stack_direction(stack, fp, fm):
    """Stack mode: 2-D transforms per offset, time transform, F+ on the positive time
    frequencies, F- on the others, slices 0 and nt/2 cleared, and back."""
    nt = stack.shape[0]
    spec = np.fft.fft(np.fft.fft2(stack), axis=0)
    for t in range(nt):
        if t == 0 or t == nt // 2:
            spec[t] = 0
        else:
            spec[t] *= fp if t < nt // 2 else fm
    return np.real(np.fft.ifft2(np.fft.ifft(spec, axis=0)))


def compute(arrays, op, args):
    if op == "harmonic":
        st = arrays[args[0]].astype(np.float64)  # (nx, ny, nt)
        h = int(args[1])
        c = 2.0 / st.shape[2] * np.fft.fft(st, axis=2)[:, :, h]
        return np.stack([c.real, c.imag], axis=2).astype(np.float32)
    if op == "cos2":
        nx, ny, nz = (int(v) for v in args[:3])
        fov = [float(v) for v in args[3:6]]
        v = [float(x) for x in args[6:9]]
        return back(cos2(nx, ny, nz, fov, v))
    if op == "sector":
        nx, ny = int(args[0]), int(args[1])
        return back(sector(nx, ny, float(args[2]), float(args[3]), float(args[4]),
                           float(args[5])))
    if op == "band":
        kind, ftype = args[0], int(args[1])
        nx, ny, nz = (int(v) for v in args[2:5])
        sy, sz, c0, c1 = (float(v) for v in args[5:9])
        return back(band(kind, ftype, nx, ny, nz, sy, sz, c0, c1, int(args[9])))
    if op == "rfilter":
        x, f = yx(arrays[args[0]]), yx(arrays[args[1]])
        return back(np.fft.irfft2(np.fft.rfft2(x) * f, s=x.shape))
    if op == "cfilter":
        x, f = yx(arrays[args[0]]), yx(arrays[args[1]])
        return back(np.real(np.fft.ifft2(np.fft.fft2(x) * f)))
    if op == "spatial":
        img, mask = yx(arrays[args[0]]), yx(arrays[args[1]])
        return back(spatial(img, mask, int(args[2]), int(args[3]), int(args[4])))
    if op == "dirstack":
        st = np.moveaxis(arrays[args[0]].astype(np.float64), 2, 0)  # (nt, nx, ny)
        st = np.swapaxes(st, 1, 2)  # (nt, ny, nx)
        out = stack_direction(st, yx(arrays[args[1]]), yx(arrays[args[2]]))
        return np.moveaxis(np.swapaxes(out, 1, 2), 0, 2).astype(np.float32)
    if op == "lognormal":
        nx, ny, nz = (int(v) for v in args[:3])
        fovs = [float(v) for v in args[3:6]]
        f, ratio, axis = float(args[6]), float(args[7]), int(args[8])
        shape = (nz, ny, nx) if nz > 1 else (ny, nx)
        fv = fovs[:len(shape)][::-1]
        return back(lognormal_bank(shape, fv, f, ratio, [axis])[0])
    if op == "lfe":
        img = yx(arrays[args[0]])
        nbands, base, ratio = int(args[1]), float(args[2]), float(args[3])
        fovs = [float(v) for v in args[4:4 + img.ndim]][::-1]
        est, cert = lfe(img, nbands, base, ratio, fovs, False)
        return np.stack([back(est), back(cert)], axis=-1)
    if op == "lfec":
        pair = arrays[args[0]].astype(np.float64)  # (nx, ny, 2)
        img = (pair[:, :, 0] + 1j * pair[:, :, 1]).T
        nbands, base, ratio = int(args[1]), float(args[2]), float(args[3])
        fovs = [float(args[5]), float(args[4])]
        est, cert = lfe(img, nbands, base, ratio, fovs, True)
        return np.stack([back(est), back(cert)], axis=-1)
    raise ValueError(op)


if __name__ == "__main__":
    peer.run(compute)
