"""nibabel's side of the NIfTI reader and writer tests. Each case line "id op path" is answered
with an array, x fastest, in native byte order:

  data PATH       get_fdata() when the header scales, else dataobj.get_unscaled()
  raw PATH        dataobj.get_unscaled(), whatever the header says
  rgb PATH C      colour channel C of an RGB file
"""
import nibabel as nib
import numpy as np

import peer


def native(a):
    a = np.asarray(a)
    return a.astype(a.dtype.newbyteorder("="))


def scales(img):
    # nibabel moves the header's scaling onto the data proxy as it loads.
    return img.dataobj.slope != 1 or img.dataobj.inter != 0


def load(path):
    img = nib.load(path)
    if not isinstance(img, (nib.Nifti1Image, nib.Nifti2Image, nib.Nifti1Pair, nib.Nifti2Pair)):
        img = nib.Nifti2Image.from_filename(path)  # a CIFTI file, as its plain NIfTI-2 array
    return img


def compute(arrays, op, args):
    img = load(args[0])
    if op == "data":
        return native(img.get_fdata() if scales(img) else img.dataobj.get_unscaled())
    if op == "raw":
        return native(img.dataobj.get_unscaled())
    if op == "rgb":
        return native(img.dataobj.get_unscaled()[args[1]])
    raise ValueError(op)


peer.run(compute)
