"""Changes to files, and new ones."""

import datetime
import os

import numpy

from . import _core
from ._error import Error
from ._file import _FILE, _IMAGE, _WORDS, File, Part


def _part(part):
    if isinstance(part, Part):
        return part._kind, part.index
    if isinstance(part, File):
        return _FILE, 0
    kind, _, number = part.partition(":")
    if kind not in _WORDS or (kind == "file") == bool(number) or not (kind == "file" or number.isdigit()):
        raise Error("a part is file, image:N, graphic:N, text:N or data:N", "", str(part))
    return _WORDS[kind], int(number or 0)


def _storage(lossless, jpeg, jpeg2000):
    if sum(way not in (None, False) for way in (jpeg, jpeg2000)) + (lossless is True) > 1:
        raise Error("give one of lossless, jpeg and jpeg2000")
    if jpeg not in (None, False):
        return "jpeg", float(85 if jpeg is True else jpeg)
    if jpeg2000 not in (None, False):
        return "jpeg2000", 0.0 if jpeg2000 is True else float(jpeg2000)
    return "uncompressed", 0.0


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
    if array.dtype.kind not in "uifc" or array.dtype.itemsize not in ((8, 16) if array.dtype.kind == "c" else (4, 8) if array.dtype.kind == "f" else (1, 2, 4, 8)):
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
        for name, text in ({field: value} if field is not None else {}).items() | fields.items():
            try:
                if part == "all":
                    self._calls.set_all(name, str(text), force)
                else:
                    self._calls.set(*_part(part), name, str(text), force)
            except Error as error:
                raise Error(error.words, name, error.segment, error.offset, error.status) from None
        return self

    def set_record(self, part, tag, data=None, **fields):
        """Gives the first record of a tag other data, or adds it; or sets fields of it by their mnemonics."""
        kind, index = _part(part)
        if data is not None:
            self._calls.set_record(kind, index, tag, bytes(data))
        for name, text in fields.items():
            try:
                self._calls.set_record_field(kind, index, tag, name, str(text))
            except Error as error:
                raise Error(error.words, name, error.segment, error.offset, error.status) from None
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
        how = (*_storage(lossless, jpeg, jpeg2000), block, mode, *at)
        if isinstance(source, (str, bytes, os.PathLike)):
            number = self._calls.append_picture(os.fsencode(source), *how)
        else:
            number = self._calls.append_samples(*_pixels(source), *how)
        if fields:
            self.set(f"image:{number}", **fields)
        return number

    def append_text(self, text):
        """Adds a text. Returns its number among the texts."""
        return self._calls.append_text(text.encode("utf-8") if isinstance(text, str) else text)

    def append_graphic(self, metafile, at=(0, 0)):
        """Adds a metafile (CGM, bytes) as it is. Returns its number among the graphics."""
        return self._calls.append_graphic(metafile, *at)

    def append_data(self, name, data, version=1):
        """Adds a data extension of a registered name. Returns its number among them."""
        return self._calls.append_data(name, version, bytes(data))

    def recompress(self, image, jpeg=None, jpeg2000=None, block=0, mode="B"):
        """Stores an image anew; ways that lose nothing are read again and compared."""
        index = image.index if isinstance(image, Part) else image
        self._calls.recompress(index, *_storage(None, jpeg, jpeg2000), block, mode)
        return self

    def set_level(self, level=0):
        """Sets CLEVEL; 0 for the lowest that the file fits."""
        self._calls.set_level(level)
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
