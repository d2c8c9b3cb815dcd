"""Open files."""

import os
import tempfile
import warnings

from . import _core
from ._arguments import _bands, _count, _four
from ._error import Error, MissingSegmentWarning
from ._parts import _CLASSES, _DATA, _GRAPHIC, _IMAGE, _TEXT, Part, _Handle
from ._told import Difference, Finding

_STRETCHES = {"percent": 0, "minmax": 1, "none": 2}


class File:
    """An open file, as orbntf.open gives it: `images`, `graphics`, `texts` and `extensions` are lists of its segments,
    `header` is the file header. A context manager."""

    def __init__(self, source):
        isBytes = isinstance(source, (bytearray, memoryview)) or (
            isinstance(source, bytes) and source[:4] in (b"NITF", b"NSIF") and len(source) > 360)
        self._source = bytes(source) if isBytes else os.fspath(source)
        self.name = "bytes" if isBytes else os.fsdecode(self._source)
        try:
            opened = _core.File(self._source, True) if isBytes else _core.File(os.fsencode(self._source))
        except Error as error:
            raise Error(f"{self.name}: {error.words}", error.field, error.segment, error.offset, error.status) from None
        self._identity = None if isBytes else _identity(self._source)
        self._handle = _Handle(self.name, opened)
        parts = [_CLASSES.get(told[0], Part)(self._handle, told) for told in opened.segments()]
        self.header, self.segments = parts[0], parts[1:]
        self.images = [part for part in parts if part._kind == _IMAGE]
        self.graphics = [part for part in parts if part._kind == _GRAPHIC]
        self.texts = [part for part in parts if part._kind == _TEXT]
        self.extensions = [part for part in parts if part._kind == _DATA]

    @property
    def _calls(self):
        return self._handle.calls

    def __repr__(self):
        return f"<{self.version} file {self.name}, {len(self.segments)} segments>"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __reduce__(self):
        source = self._source
        return (File, (bytearray(source),) if self.name == "bytes" else (source,))

    def close(self):
        """Closes it; nothing more can be read."""
        self._handle.open = None

    @property
    def size(self):
        """Bytes of the file."""
        return self._calls.size()

    @property
    def version(self):
        """"NITF02.10" or "NSIF01.00"."""
        return self.header.fields["FHDR"] + self.header.fields["FVER"]

    @property
    def fields(self):
        """The texts of the file header's fields, by mnemonic."""
        return self.header.fields

    @property
    def values(self):
        """What they mean; see Part.values."""
        return self.header.values

    @property
    def records(self):
        """The tagged records of the file header."""
        return self.header.records

    def render(self, window=None, size=None, scale=1, bands=None, stretch="percent", segment=None, fast=False,
               stretch_each=False):
        """A picture by the published standard: an array of (rows, columns, 3), uint8.

        window: (row, column, height, width) of the picture at its full size.
        size: pixels of the longer side, means of areas; never enlarges.
        scale: 2 averages squares of 2 x 2 pixels: half the size.
        bands: one or three that are shown, from 0.
        stretch: of samples of more than 8 bits, "percent" (2 and 98), ("percent", low, high), "minmax" or "none".
        segment: an Image or its number, which is drawn alone; else the composite of all segments.
        fast: smaller pictures take the nearest pixels, and read no more.
        stretch_each: each band by itself.

        A segment that cannot be drawn leaves its place empty and is told by a MissingSegmentWarning. Raises Error.
        """
        if size is not None and scale != 1:
            raise Error("give either size or scale")
        by, *ends = stretch if isinstance(stretch, (tuple, list)) and stretch else (stretch,)
        if not isinstance(by, str) or by not in _STRETCHES or len(ends) not in (0, 2):
            raise Error('a stretch is "percent", ("percent", low, high), "minmax" or "none"')
        low, high = ends or (2, 98)
        if isinstance(segment, Part) and segment._kind != _IMAGE:
            raise Error("only images are drawn alone", "", segment.title)
        image = segment.index if isinstance(segment, Part) else segment
        image = None if image is None else _count("an image's number", image)
        asked = (0, 0, 0, 0) if window is None else _four(window)
        if window is not None and 0 in asked[2:]:
            raise Error(f"the window {asked} has no pixels")
        size = 0 if size is None else _count("size", size, 1, 65535)
        picture, missing = self._calls.draw(asked, size, _count("scale", scale, 1, 65536), bool(fast), image, _bands(bands),
                                            _STRETCHES[by], float(low), float(high), bool(stretch_each))
        for part, words in missing:
            warnings.warn(f"{part} is left out: {words}", MissingSegmentWarning, stacklevel=2)
        return picture

    def check(self, profile=None):
        """What does not hold, as a list of Finding in the order of the file's bytes.

        profile: "npje", "epje", "tpje" or "level:05", of which more is asked.
        """
        return [Finding(rule, severity, part, field, offset, found, wanted, standard)
                for severity, rule, part, field, offset, found, wanted, standard in self._calls.check(profile or "")]

    def locate(self, row, column, image=0, height=None):
        """Where a point of an image lies on earth; see Image.locate."""
        return self._image(image).locate(row, column, height)

    def locate_ground(self, latitude, longitude, image=0, height=None):
        """The point of an image that lies there; see Image.locate_ground."""
        return self._image(image).locate_ground(latitude, longitude, height)

    def _image(self, number):
        if not self.images:
            raise Error("the file has no image")
        return self.images[_count("an image's number", number, 0, len(self.images) - 1)]

    def report(self, path):
        """Writes a page (HTML) that tells what is in the file, where it is and what does not hold."""
        page = self._calls.report("" if self.name != "bytes" else "bytes")
        if self._identity is not None and _identity(path) == self._identity:
            raise Error("the output is the input", status="not_written")
        target = os.path.realpath(os.fsencode(path))
        beside = None
        try:
            descriptor, beside = tempfile.mkstemp(prefix=b".orbntf-", dir=os.path.dirname(target))
            with open(descriptor, "wb") as out:
                out.write(page)
                mask = os.umask(0)
                os.umask(mask)
                os.fchmod(out.fileno(), os.stat(target).st_mode & 0o7777 if os.path.exists(target) else 0o666 & ~mask)
            os.replace(beside, target)
        except (OSError, ValueError) as error:
            if beside is not None and os.path.exists(beside):
                os.unlink(beside)
            raise Error(f"{os.fsdecode(path)}: {getattr(error, 'strerror', None) or error}", status="not_written") from error

    def edit(self):
        """An Edit that begins as this file; the file itself stays as it is."""
        from ._edit import Edit
        return Edit(self)


def _identity(path):
    """What tells a file from others, whatever it is called; None for none."""
    try:
        status = os.stat(path)
    except (OSError, ValueError):
        return None
    return status.st_dev, status.st_ino


def _opened(source):
    return source if isinstance(source, File) else File(source)


def diff(a, b):
    """What differs between two files (File, path or bytes): a list of Difference, empty where every byte is the
    same. Texts of fields and of records' fields are str; whole records are hexadecimal digits."""
    found = _core.compare(_opened(a)._calls, _opened(b)._calls)
    return [Difference(kind, part, name, field, *(_shown(text, kind, field) for text in (first, second)), words)
            for kind, part, name, field, first, second, words in found]


def _shown(text, kind, field):
    if text is None:
        return None
    return text.hex() if kind == "record" and not field else text.decode("latin-1")
