"""What is raised and warned of."""

from . import _core


class Error(Exception):
    """Why something could not be done.

    status: "unreadable", "not_nitf", "truncated", "damaged", "unsupported", "invalid", "too_much", "stopped",
        "not_written" or "breaks_rule".
    field: the mnemonic that it is about, "" for none.
    segment: "image 0", "" for none.
    offset: a byte of the file, None where it is not known.
    """

    def __init__(self, words, field="", segment="", offset=None, status="invalid"):
        super().__init__(words, field, segment, offset, status)
        self.words, self.field, self.segment, self.offset, self.status = words, field, segment, offset, status

    def __str__(self):
        return f"{self.segment}: {self.words}" if self.segment else self.words


class MissingSegmentWarning(UserWarning):
    """A segment could not be drawn and left its place in a picture empty."""


_core.use_error(Error)
