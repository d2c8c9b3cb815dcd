"""What callers give, looked at before it is passed on."""

import operator

from ._error import Error


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
