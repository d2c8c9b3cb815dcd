"""NITF 2.1 and NSIF 1.0 files: fields, records, samples, pictures, findings, places and changes.

    import orbntf

    with orbntf.open("scene.ntf") as f:
        print(f.version, f.fields["FTITLE"], [im.shape for im in f.images])
        pixels = f.images[0].read(window=(0, 0, 512, 512))   # (bands, rows, columns)
        picture = f.render(size=1024)                        # (rows, columns, 3), uint8
        for finding in f.check():
            print(finding)

Windows are (row, column, height, width); bands, images and everything else count from 0. Places are degrees on
WGS 84 and metres above its ellipsoid, and (0, 0) is the middle of an image's first pixel. What cannot be done
raises orbntf.Error.

Files are read as they are asked for; the interpreter's lock is free meanwhile. Calls on one file wait for each
other; open it once more in each thread or process to read in parallel. A pickled file is its path.
"""

import os as _os

from ._core import version as __version__
from ._edit import Edit, new
from ._error import Error, MissingSegmentWarning
from ._file import File, diff
from ._parts import Extension, Graphic, Image, Part, Text
from ._told import Difference, Finding, GroundPlace, ImagePlace, Record

__all__ = ["Difference", "Edit", "Error", "Extension", "File", "Finding", "Graphic", "GroundPlace", "Image",
           "ImagePlace", "MissingSegmentWarning", "Part", "Record", "Text", "diff", "new", "open"]


def open(source):
    """Opens a file.

    source: a path (str, bytes or os.PathLike), or the file itself as bytearray, memoryview or, where they begin
        with NITF or NSIF, bytes.

    Returns a File. Raises Error with status "unreadable" or "not_nitf".
    """
    return File(source)
