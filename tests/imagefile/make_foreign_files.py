"""Files of other programs for the tests: sample (frame, row, column) is known by a formula. make_foreign_files.py DIRECTORY"""
import pathlib
import subprocess
import sys

import numpy as np
import tifffile
from astropy.io import fits

out = pathlib.Path(sys.argv[1])
frames, rows, columns = np.mgrid[0:3, 0:37, 0:53]
signed = (1000 * frames + 20 * rows + columns - 1500).astype("<i2")
low = (signed.astype(np.int32) + 1500).astype("<u2")  # 0 to 2772
high = (low.astype(np.int64) * 23).astype("<u2")      # up to 63756

np.save(out / "signed.npy", signed)
np.save(out / "big_endian.npy", signed.astype(">i2"))
np.save(out / "plane.npy", signed[1])
np.save(out / "low.npy", low)
np.save(out / "high.npy", high)
np.save(out / "high_big_endian.npy", high.astype(">u2"))
np.save(out / "fortran.npy", np.asfortranarray(signed))
np.save(out / "floats.npy", signed.astype("<f4"))
np.save(out / "bytes.npy", low.astype("u1"))
np.save(out / "longs.npy", signed.astype("<i4"))
np.save(out / "line.npy", signed[0, 0])
np.save(out / "scalar.npy", np.int16(7))
np.save(out / "four.npy", signed[None])
np.save(out / "nothing.npy", signed[:0])
np.save(out / "complex.npy", signed.astype("<c8"))
np.save(out / "truths.npy", signed > 0)
np.save(out / "records.npy", np.zeros((4, 5), dtype=[("a", "<i2"), ("b", "<f4")]))
with open(out / "version2.npy", "wb") as file:
    np.lib.format.write_array(file, signed, version=(2, 0))
with open(out / "version3.npy", "wb") as file:
    np.lib.format.write_array(file, signed, version=(3, 0))


def save_fits(name, data, **cards):
    hdu = fits.PrimaryHDU(data)
    for key, value in cards.items():
        hdu.header[key] = value
    hdu.writeto(out / name, checksum=True)


save_fits("cube.fits", signed.astype(">i2"), EXPTIME=0.0025, OBJECT="a 'quoted' / name")
save_fits("plane.fit", signed[1].astype(">i2"))
save_fits("high.fts", high.astype("u2"))
save_fits("low.fits", low.astype("u2"))
save_fits("bottom_up.fits", signed.astype(">i2"), ROWORDER="BOTTOM-UP")
save_fits("top_down.fits", signed.astype(">i2"), ROWORDER="TOP-DOWN")
save_fits("floats.fits", signed.astype(">f4"))
save_fits("bytes.fits", low.astype("u1"))
save_fits("four.fits", signed[None].astype(">i2"))
many = signed.astype(">i2")
hdu = fits.PrimaryHDU(many)
for number in range(100):
    hdu.header.add_comment(f"line {number}")
hdu.writeto(out / "long_header.fits")
fits.HDUList([fits.PrimaryHDU(), fits.ImageHDU(many)]).writeto(out / "extension.fits")
scaled = fits.PrimaryHDU(signed.astype(">f4"))
scaled.scale("int16", bscale=0.5, bzero=3)
scaled.writeto(out / "scaled.fits")

tifffile.imwrite(out / "signed.tif", signed, photometric="minisblack")
tifffile.imwrite(out / "big_endian.tif", signed, photometric="minisblack", byteorder=">")
tifffile.imwrite(out / "low.TIFF", low, photometric="minisblack")
tifffile.imwrite(out / "high.tif", high, photometric="minisblack", rowsperstrip=5)
tifffile.imwrite(out / "big.tif", signed, photometric="minisblack", bigtiff=True)
tifffile.imwrite(out / "tiles.tif", signed, photometric="minisblack", tile=(16, 32))
for name, compression in {"zip": "zip:2", "lzw": "lzw:2", "packbits": "packbits", "lzma": "lzma", "zstd": "zstd"}.items():
    subprocess.run(["tiffcp", "-c", compression, "-r", "10", out / "signed.tif", out / f"{name}.tif"], check=True)
tifffile.imwrite(out / "floats.tif", signed.astype("<f4"), photometric="minisblack")
tifffile.imwrite(out / "bytes.tif", low.astype("u1"), photometric="minisblack")
tifffile.imwrite(out / "color.tif", np.stack([low[0]] * 3, axis=-1), photometric="rgb")
tifffile.imwrite(out / "bottom_up.tif", signed, photometric="minisblack", extratags=[(274, "H", 1, 4, False)])
tifffile.imwrite(out / "turned.tif", signed, photometric="minisblack", extratags=[(274, "H", 1, 6, False)])
with tifffile.TiffWriter(out / "mixed.tif") as tiff:
    tiff.write(signed[0], photometric="minisblack")
    tiff.write(signed[1, :20], photometric="minisblack")
