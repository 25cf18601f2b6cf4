"""bomb.py: a file that may cost more than it looks like, and what it may cost."""
import dataclasses
import typing

SECONDS = 2.0  # of processor time, for any file but those that say otherwise
MEGABYTES = 300  # of 2^20 bytes, at the peak


@dataclasses.dataclass(frozen=True)
class Bomb:
    """A file, made when it is needed: some take a second.

    `why` names the reason where a file may take more than SECONDS and MEGABYTES. Of a file that
    `has_to_open` nothing is wrong; it shows that the others are not refused for a mistake in what
    made them. `is_dear`: among the dozen that cost most, or stand for what nothing else shows.
    """
    name: str
    make: typing.Callable[[], bytes]
    seconds: float = SECONDS
    megabytes: int = MEGABYTES
    why: str = ""
    has_to_open: bool = False
    is_dear: bool = False
