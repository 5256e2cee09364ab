"""Peer of bench_dicom: writes a series of 200 files of 256 x 256 int16 with pydicom into
FOLDER, then times numpy.stack of pydicom.dcmread(f).pixel_array over the series and prints
the best of a few runs in milliseconds.

    pydicom_stack.py FOLDER
"""
import sys
import time

import numpy as np
import pydicom
from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.uid import ExplicitVRLittleEndian, generate_uid


def write(folder, count):
    rng = np.random.default_rng(13)
    series = generate_uid()
    paths = []
    for k in range(count):
        meta = FileMetaDataset()
        meta.MediaStorageSOPClassUID = "1.2.840.10008.5.1.4.1.1.4"
        meta.MediaStorageSOPInstanceUID = generate_uid()
        meta.TransferSyntaxUID = ExplicitVRLittleEndian
        ds = Dataset()
        ds.file_meta = meta
        ds.is_little_endian, ds.is_implicit_VR = True, False
        ds.SOPClassUID = meta.MediaStorageSOPClassUID
        ds.SOPInstanceUID = meta.MediaStorageSOPInstanceUID
        ds.SeriesInstanceUID = series
        ds.Modality = "MR"
        ds.StudyID, ds.SeriesNumber, ds.InstanceNumber = "1", 5, k + 1
        ds.Rows, ds.Columns = 256, 256
        ds.SamplesPerPixel, ds.PhotometricInterpretation = 1, "MONOCHROME2"
        ds.BitsAllocated, ds.BitsStored, ds.HighBit, ds.PixelRepresentation = 16, 16, 15, 1
        ds.PixelSpacing = [1.5, 1.5]
        ds.SliceThickness = 3.0
        ds.PixelData = rng.integers(-2000, 2000, (256, 256), dtype=np.int16).tobytes()
        path = f"{folder}/im{k:03d}.dcm"
        ds.save_as(path, write_like_original=False)
        paths.append(path)
    return paths


def main():
    paths = write(sys.argv[1], 200)
    np.stack([pydicom.dcmread(f).pixel_array for f in paths])
    best = float("inf")
    for _ in range(3):
        t0 = time.perf_counter()
        np.stack([pydicom.dcmread(f).pixel_array for f in paths])
        best = min(best, time.perf_counter() - t0)
    print(f"{best * 1e3:.3f}")


if __name__ == "__main__":
    main()
