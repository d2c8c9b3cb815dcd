"""What is told of files: places, findings, differences and tagged records."""

from typing import NamedTuple, Optional


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
