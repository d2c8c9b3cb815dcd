"""Changes to files, and new ones."""

import datetime
import os

import numpy

from . import _core
from ._arguments import _count
from ._error import Error
from ._file import File
from ._parts import _FILE, _WORDS, Part


_SIZES = {"u": (1, 2, 4, 8), "i": (1, 2, 4, 8), "f": (4, 8), "c": (8,)}  # bytes of samples


def _part(part):
    if isinstance(part, Part):
        return part._kind, part.index
    if isinstance(part, File):
        return _FILE, 0
    kind, _, number = str(part).partition(":")
    isNumber = number.isascii() and number.isdigit() and len(number) < 7
    if kind not in _WORDS or (kind == "file") == bool(number) or not (kind == "file" or isNumber):
        raise Error("a part is file, image:N, graphic:N, text:N or data:N", "", str(part))
    return _WORDS[kind], int(number or 0)


def _number(way, given, usual):
    """The number of a way to store samples; None where it is not asked for."""
    if given is None or (isinstance(given, (bool, numpy.bool_)) and not given):
        return None
    if isinstance(given, (bool, numpy.bool_)):
        return usual
    try:
        return float(given)
    except (TypeError, ValueError):
        raise Error(f"{way} takes a number or True, not {given!r}") from None


def _storage(lossless, jpeg, jpeg2000):
    jpeg, jpeg2000 = _number("jpeg", jpeg, 85.0), _number("jpeg2000", jpeg2000, 0.0)
    if (jpeg is not None) + (jpeg2000 is not None) + bool(lossless) > 1:
        raise Error("give one of lossless, jpeg and jpeg2000")
    if jpeg is not None:
        if not 1 <= jpeg <= 100:
            raise Error(f"jpeg is a quality of 1 to 100, not {jpeg:g}")
        return "jpeg", jpeg
    return ("uncompressed", 0.0) if jpeg2000 is None else ("jpeg2000", jpeg2000)


def _layout(block, mode):
    if mode not in ("B", "P", "R", "S"):
        raise Error(f"a mode is B, P, R or S, not {mode!r}")
    return _count("block", block, 0, 8192), mode


def _text(value):
    """A value as a field takes it: as it stands in Part.values, or a text."""
    if isinstance(value, datetime.datetime):
        return value.strftime("%Y%m%d%H%M%S")
    if isinstance(value, (tuple, list)) and len(value) == 2:
        return f"{value[0]},{value[1]}"
    return str(value)


def _pixels(array):
    """Rows, columns and bands in the machine's byte order, and the bits of a sample."""
    array = numpy.asarray(array)
    if array.ndim == 2:
        array = array[numpy.newaxis]
    bits = 1 if array.dtype == bool else array.dtype.itemsize * 8
    if array.dtype == bool:
        array = array.astype("uint8")
    if array.ndim != 3 or 0 in array.shape:
        raise Error("an array of an image is (rows, columns) or (bands, rows, columns)")
    if array.dtype.kind not in "uifc" or array.dtype.itemsize not in _SIZES[array.dtype.kind]:
        raise Error(f"samples of {array.dtype} are not stored", status="unsupported")
    return numpy.ascontiguousarray(numpy.moveaxis(array, 0, 2), array.dtype.newbyteorder("=")), bits


class Edit:
    """Changes that save() writes: what is not named keeps its bytes. Parts are "file", "image:0", "graphic:1", … or
    segments, as they are numbered at that time. Every change returns the Edit, but for those that append: the number
    of the new segment.

        orbntf.open("a.ntf").edit().set("file", FTITLE="A title").save("b.ntf")

    Raises Error with status "invalid" where a change makes no sense, and its field.
    """

    def __init__(self, file=None, date=None):
        self._file = file
        self._calls = _core.Edit(file._calls if file is not None else date or datetime.datetime.now(
            datetime.timezone.utc).strftime("%Y%m%d%H%M%S"))

    def set(self, part, field=None, value=None, force=False, **fields):
        """Sets a field, or several: set("image:0", "IID1", "SCENE") or set("image:0", IID1="SCENE", ICAT="VIS").
        The part "all" sets it in every header that has it. With `force` also to what the format does not allow."""
        for name, given in {**({field: value} if field is not None else {}), **fields}.items():
            text = _text(given)
            if part == "all":
                self._calls.set_all(name, text, force)
            else:
                self._calls.set(*_part(part), name, text, force)
        return self

    def set_record(self, part, tag, data=None, **fields):
        """Gives the first record of a tag other data, or adds it; or sets fields of it by their mnemonics."""
        kind, index = _part(part)
        if data is not None:
            self._calls.set_record(kind, index, tag, bytes(data))
        for name, text in fields.items():
            self._calls.set_record_field(kind, index, tag, name, _text(text))
        return self

    def remove_record(self, part, tag):
        """Takes the first record of a tag out."""
        self._calls.remove_record(*_part(part), tag)
        return self

    def remove(self, part):
        """Takes a segment out; what is attached to it stays at its place."""
        self._calls.remove(*_part(part))
        return self

    def append_image(self, source, lossless=None, jpeg=None, jpeg2000=None, block=0, mode="B", at=(0, 0), fields=None):
        """Adds an image above all others.

        source: an array of (rows, columns) or (bands, rows, columns), of which three bands are red, green and blue;
            or the path of a picture file.
        jpeg: its quality, 1 to 100; jpeg2000: bits a sample, or True for lossless; else it is stored as it is.
        block: side of blocks, 0 for the usual; mode: IMODE of uncompressed data, B, P, R or S.
        at: (row, column).
        fields: of its header, by mnemonic.

        Returns its number among the images. Raises Error.
        """
        row, column = at
        how = (*_storage(lossless, jpeg, jpeg2000), *_layout(block, mode), int(row), int(column))
        if isinstance(source, (str, bytes, os.PathLike)):
            number = self._calls.append_picture(os.fsencode(source), *how)
        else:
            number = self._calls.append_samples(*_pixels(source), *how)
        try:
            self.set(f"image:{number}", **(fields or {}))
        except Error:
            self._calls.remove(_WORDS["image"], number)
            raise
        return number

    def append_text(self, text):
        """Adds a text. Returns its number among the texts."""
        return self._calls.append_text(text.encode("utf-8") if isinstance(text, str) else text)

    def append_graphic(self, metafile, at=(0, 0)):
        """Adds a metafile (CGM, bytes) as it is. Returns its number among the graphics."""
        return self._calls.append_graphic(metafile, *at)

    def append_data(self, name, data, version=1):
        """Adds a data extension of a registered name. Returns its number among them."""
        return self._calls.append_data(name, _count("version", version, 0, 99), bytes(data))

    def recompress(self, image, jpeg=None, jpeg2000=None, block=0, mode="B"):
        """Stores an image anew; ways that lose nothing are read again and compared."""
        index = image.index if isinstance(image, Part) else image
        self._calls.recompress(index, *_storage(None, jpeg, jpeg2000), *_layout(block, mode))
        return self

    def set_level(self, level=0):
        """Sets CLEVEL; 0 for the lowest that the file fits."""
        self._calls.set_level(_count("level", level, 0, 99))
        return self

    def save(self, path, force=False):
        """Writes all of it, after it was proven that what was not named is as it was and that no rule is broken that
        was kept; with `force` rules may be broken. The path may be that of no input, and keeps what it stood for on
        failure. Raises Error with status "not_written" or "breaks_rule"."""
        self._calls.save(os.fsencode(path), force)


def new(path, images=(), texts=(), fields=None, date=None, lossless=None, jpeg=None, jpeg2000=None, block=0, mode="B"):
    """Writes a new file of arrays or picture files, each above the one before, and texts.

        orbntf.new("out.ntf", images=[array], fields={"OSTAID": "here", "FTITLE": "A title"})

    images, lossless, jpeg, jpeg2000, block, mode: as of Edit.append_image.
    fields: of the file header. date: "CCYYMMDDhhmmss", else now.
    """
    edit = Edit(date=date)
    edit.set("file", **{"OSTAID": "orbntf", **(fields or {})})
    for image in images:
        edit.append_image(image, lossless, jpeg, jpeg2000, block, mode)
    for text in texts:
        edit.append_text(text)
    edit.set_level()
    edit.save(path)
