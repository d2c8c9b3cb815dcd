"""Open files and their parts."""

import datetime
import functools
import json
import operator
import os
import tempfile
import warnings
from typing import NamedTuple, Optional

import numpy

from . import _core
from ._error import Error, MissingSegmentWarning

_FILE, _IMAGE, _GRAPHIC, _TEXT, _DATA = range(5)
_WORDS = {"file": _FILE, "image": _IMAGE, "graphic": _GRAPHIC, "text": _TEXT, "data": _DATA}
_STRETCHES = {"percent": 0, "minmax": 1, "none": 2}


class GroundPlace(NamedTuple):
    """Where a point of an image lies: degrees on WGS 84, metres above its ellipsoid (None where the model knows
    nothing of heights), the model's name, and the metres that it may be off."""

    latitude: float
    longitude: float
    height: Optional[float]
    model: str
    error: float


class ImagePlace(NamedTuple):
    """The point of an image, the model's name, and the metres that it may be off."""

    row: float
    column: float
    model: str
    error: float


class Finding(NamedTuple):
    """What does not hold: `rule` ("block.cover"), `severity` ("note", "warning" or "error"), the `part` and
    `field` at fault and their byte `offset`, what was `found`, what is `wanted`, and the `standard` that says so."""

    rule: str
    severity: str
    part: str
    field: str
    offset: int
    found: str
    wanted: str
    standard: str

    def __str__(self):
        return f"{self.severity} {self.rule}: {self.part}, {self.field}, byte {self.offset}: {self.found}"


class Difference(NamedTuple):
    """What is not the same in two files: `kind` ("field", "record", "data" or "samples"), where, and the two
    texts; None where a file does not have it. `words` tell of samples."""

    kind: str
    part: str
    name: str
    field: str
    a: Optional[str]
    b: Optional[str]
    words: str


class Record:
    """A tagged record: `tag`, `area` (the field that holds it), `offset`, `bytes`, `fields` (texts by mnemonic; of
    what repeats a list of such) and `problem`, why it is not decoded, "" where it is."""

    __slots__ = ("tag", "area", "offset", "bytes", "problem", "fields")

    def __init__(self, tag, area, offset, data, problem, fields):
        self.tag, self.area, self.offset = tag.decode("latin-1").rstrip(), area, offset
        self.bytes, self.problem, self.fields = data, problem, _tree(fields)

    def __repr__(self):
        return f"<record {self.tag}, {len(self.bytes)} bytes>"


def _count(what, number, least=0, most=2**32 - 1, segment=""):
    """A whole number within bounds; else an Error that names it."""
    try:
        number = operator.index(number)
    except TypeError:
        raise Error(f"{what} is a whole number, not {number!r}", "", segment) from None
    if not least <= number <= most:
        raise Error(f"{what} is {least} to {most}, not {number}", "", segment)
    return number


def _bands(bands, segment=""):
    """Bands that are asked for as a list; empty for None."""
    if bands is None:
        return []
    try:
        chosen = [_count("a band", band, segment=segment) for band in bands]
    except TypeError:
        raise Error(f"bands are a list, not {bands!r}", "", segment) from None
    if not chosen:
        raise Error("no band is asked for", "", segment)
    return chosen


def _four(window, segment=""):
    try:
        row, column, height, width = window
    except (TypeError, ValueError):
        raise Error(f"a window is (row, column, height, width), not {window!r}", "", segment) from None
    return tuple(_count("a window's number", number, 0, 2**63, segment) for number in (row, column, height, width))


def _tree(fields):
    texts = {}
    for name, _unit, text, turns in fields:
        if not turns:
            texts[name] = text.decode("latin-1")
        elif all(len(turn) == 1 and turn[0][0] == name for turn in turns):
            texts[name] = [turn[0][2].decode("latin-1") for turn in turns]
        else:
            texts[name] = [_tree(turn) for turn in turns]
    return texts


def _date(text):
    try:
        return datetime.datetime.strptime(text, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=datetime.timezone.utc)
    except ValueError:
        return text


class _Handle:
    """What an open file and its parts share, so that a part may outlive the file."""

    def __init__(self, name, open_):
        self.name, self.open = name, open_

    @property
    def calls(self):
        if self.open is None:
            raise Error("the file is closed")
        return self.open


class Part:
    """The file header or a segment: `kind`, `index` within its kind, `title`, `offset`, `header_length`,
    `data_offset` and `data_length` in bytes."""

    def __init__(self, handle, told):
        self._handle = handle
        (self._kind, self.index, self.title, self.offset, self.header_length, self.data_offset, self.data_length,
         self.complete) = told

    def __repr__(self):
        return f"<{self.title} of {self._handle.name}>"

    @property
    def _calls(self):
        return self._handle.calls

    @functools.cached_property
    def fields(self):
        """The texts of the fields by mnemonic, as stored; of repeated fields with a number from 1: "IREPBAND2"."""
        return {name: text.decode("latin-1") for name, text, _, _ in self._calls.fields(self._kind, self.index)}

    @functools.cached_property
    def meanings(self):
        """What each field means, in words."""
        return {name: meaning for name, _, meaning, _ in self._calls.fields(self._kind, self.index)}

    @functools.cached_property
    def values(self):
        """What fields mean that mean more than a text: int and float, datetime (ISO 8601 text where it is not all
        known), (row, column), "#RRGGBB"; None for a text that means nothing. IGEOLO is a dict of corners in degrees
        and a GeoJSON polygon."""
        values = json.loads(self._calls.values(self._kind, self.index))
        for name, value in values.items():
            if isinstance(value, list) and len(value) == 2:
                values[name] = tuple(value)
            elif isinstance(value, str) and not value.startswith("#"):
                values[name] = _date(value)
        return values

    @functools.cached_property
    def records(self):
        """Its tagged records, in order."""
        return [Record(*record) for record in self._calls.records(self._kind, self.index)]

    def data(self, offset=0, count=None):
        """Bytes of its data as they are stored, at most 1 GiB at once. Raises Error."""
        count = self.data_length if count is None else count
        return self._calls.data(self._kind, self.index, _count("an offset", offset, 0, 2**63), _count("a count", count, 0, 2**63))


class Graphic(Part):
    """A graphic segment; `data()` is its metafile (CGM)."""


class Extension(Part):
    """A data extension segment."""


class Text(Part):
    """A text segment."""

    @property
    def text(self):
        """What it says: UTF-8 of format U8S, else one character a byte."""
        encoding = "utf-8" if self.fields.get("TXTFMT") == "U8S" else "latin-1"
        return self.data().decode(encoding, errors="replace")


class Image(Part):
    """An image segment, read by windows at its own depth.

        im.shape                       (bands, rows, columns)
        im[0, 100:200, 300:400]        as of an array; only that is read

    A list of numbers picks along its own axis, whatever the others are; masks are not taken.
    """

    @functools.cached_property
    def _form(self):
        return self._calls.describe(self.index)

    @property
    def shape(self):
        """(bands, rows, columns)."""
        return self._form["shape"]

    @property
    def dtype(self):
        """The type of its samples: unsigned, signed, float or complex, in the machine's byte order."""
        return self._form["dtype"]

    @property
    def bits(self):
        """Bits of a sample as stored (NBPP); `significant_bits` are ABPP."""
        return self._form["bits"]

    @property
    def significant_bits(self):
        return self._form["significant_bits"]

    @property
    def no_data(self):
        """What stands where a mask has no pixels; None without a mask."""
        return self._form["no_data"]

    def __len__(self):
        return self.shape[0]

    def _window(self, window, shape=None):
        bands, rows, columns = self.shape
        if window is None:
            return (0, 0, rows, columns)
        row, column, height, width = _four(window, self.title)
        if height < 1 or width < 1 or row + height > rows or column + width > columns:
            raise Error(f"the window {tuple(window)} is not on {rows} rows and {columns} columns", "", self.title)
        return (row, column, height, width)

    def read(self, window=None, bands=None, reduce=0):
        """Samples as an array of (bands, rows, columns).

        window: (row, column, height, width) of the full image; None for all of it.
        bands: from 0, in the order that is wanted; None for all.
        reduce: sides of 1/2**reduce, rounded up: 1 halves once. JPEG and JPEG 2000 by their codecs' own means
            (JPEG up to 3), others every 2**reduce-th sample.

        Raises Error.
        """
        window = self._window(window)
        chosen = _bands(bands, self.title)
        pixels = self._calls.read(self.index, window, chosen, _count("reduce", reduce, 0, 16, self.title))
        return numpy.ascontiguousarray(numpy.moveaxis(pixels, 2, 0))

    def mask(self, window=None, bands=None):
        """True where pixels are there: (rows, columns) of bool. False where the image's mask has no block, or a pad
        pixel in all bands that are asked for."""
        window = self._window(window)
        return self._calls.mask(self.index, window, _bands(bands, self.title), window[2:])

    def __getitem__(self, key):
        key = key if isinstance(key, tuple) else (key,)
        if any(part is Ellipsis for part in key):
            at = next(i for i, part in enumerate(key) if part is Ellipsis)
            key = key[:at] + (slice(None),) * (4 - len(key)) + key[at + 1:]
        key += (slice(None),) * (3 - len(key))
        if len(key) != 3:
            raise IndexError("an image has three axes: bands, rows and columns")
        bands, rows, columns = (_axis(part, count) for part, count in zip(key, self.shape))
        if not all(len(axis) for axis, _ in (bands, rows, columns)):
            return numpy.empty([len(axis) for axis, isOne in (bands, rows, columns) if not isOne], self.dtype)
        window = (min(rows[0]), min(columns[0]), max(rows[0]) - min(rows[0]) + 1, max(columns[0]) - min(columns[0]) + 1)
        samples = self.read(window, list(bands[0]))
        samples = samples[:, _within(rows[0], window[0]), :][:, :, _within(columns[0], window[1])]
        return samples[tuple(0 if isOne else slice(None) for _, isOne in (bands, rows, columns))]

    def __array__(self, dtype=None, copy=None):
        return numpy.asarray(self.read(), dtype)

    def locate(self, row, column, height=None):
        """Where a point lies on earth: a GroundPlace. Raises Error where nothing tells it."""
        return GroundPlace(*self._calls.to_ground(self.index, row, column, height))

    def locate_ground(self, latitude, longitude, height=None):
        """The point that lies there: an ImagePlace. Raises Error where nothing tells it."""
        return ImagePlace(*self._calls.to_image(self.index, latitude, longitude, height))


def _axis(part, count):
    if isinstance(part, slice):
        return range(*part.indices(count)), False
    if isinstance(part, (list, numpy.ndarray)) and numpy.ndim(part) == 1:
        return [_checked(number, count) for number in part], False
    return [_checked(part, count)], True


def _checked(number, count):
    if isinstance(number, (bool, numpy.bool_)):
        raise IndexError("an axis takes numbers, slices and lists of numbers, not masks")
    try:
        number = operator.index(number)
    except TypeError:
        raise IndexError(f"an axis takes numbers, slices and lists of numbers, not {number!r}") from None
    if not -count <= number < count:
        raise IndexError(f"{number} is not in an axis of {count}")
    return number % count


def _within(axis, first):
    if isinstance(axis, range):
        stop = axis.stop - first
        return slice(axis.start - first, None if stop < 0 else stop, axis.step)
    return [number - first for number in axis]


_CLASSES = {_IMAGE: Image, _GRAPHIC: Graphic, _TEXT: Text, _DATA: Extension}


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
