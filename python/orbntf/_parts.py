"""The file header and segments."""

import datetime
import functools
import json
import operator

import numpy

from ._arguments import _bands, _count, _four
from ._error import Error
from ._told import GroundPlace, ImagePlace, Record

_FILE, _IMAGE, _GRAPHIC, _TEXT, _DATA = range(5)
_WORDS = {"file": _FILE, "image": _IMAGE, "graphic": _GRAPHIC, "text": _TEXT, "data": _DATA}


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
