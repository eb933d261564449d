"""Pillow as a peer of the interoperability tests.

  pillow_icns.py read FAMILY.icns OUTDIR
      every size Pillow offers, as raw straight RGBA in OUTDIR/WxHxSCALE.rgba
  pillow_icns.py write FAMILY.icns SOURCE.png...
      Pillow's own .icns writer, with a source for each size it writes
"""
import os
import sys

from PIL import Image


def read(family, outdir):
    sizes = Image.open(family).info["sizes"]
    for size in sizes:
        # A fresh image per size: Pillow keeps the first size it loads.
        with Image.open(family) as image:
            image.size = size
            image.load()
            pixels = image.convert("RGBA").tobytes()
        with open(os.path.join(outdir, "%dx%dx%d.rgba" % size), "wb") as out:
            out.write(pixels)


def write(family, sources):
    images = [Image.open(source) for source in sources]
    images[0].save(family, format="ICNS", append_images=images)


if __name__ == "__main__":
    command, family, *rest = sys.argv[1:]
    if command == "read":
        read(family, rest[0])
    else:
        write(family, rest)
