# Generated from the schemas of shelf.
from typing import Literal, Never, TypedDict, Unpack

import kxsim.typing
import mf.zero
import shelf
from kxsim._classes import HostEnum
from shelf import attic as attic

__all__ = [
    "Board",
    "Book",
    "Cover",
    "OakBoard",
    "attic",
]

class Cover(HostEnum):
    """What a book is bound in."""

    Cloth = 1
    """Cloth over boards."""
    Paper = 2
    """Paper."""

_CoverOrName = Cover | Literal["Cloth", "Paper"]

class _BoardValues(TypedDict, total=False):
    Width: float

class Board(mf.zero.ModelElement):
    """A board of a shelf."""

    def __init__(self, abstract: Never, /) -> None: ...
    @property
    def Width(self) -> float:
        """In metres."""
    @Width.setter
    def Width(self, value: float) -> None: ...
    @property
    def Load(self) -> float:
        """What it carries, in kilograms."""
    def heaviest(self) -> shelf.Book:
        """What weighs most on it."""

class _BookValues(TypedDict, total=False):
    Title: str
    Cover: _CoverOrName
    Scan: kxsim.typing.Value
    Board: shelf.OakBoard | None

class Book(mf.zero.ModelElement):
    """A book."""

    def __init__(
        self,
        model: mf.zero.Model,
        /,
        *first: kxsim.typing.Identity | _BookValues,
        **values: Unpack[_BookValues],
    ) -> None: ...
    @property
    def Title(self) -> str:
        """What is on its back."""
    @Title.setter
    def Title(self, value: str) -> None: ...
    @property
    def Cover(self) -> shelf.Cover:
        """What it is bound in."""
    @Cover.setter
    def Cover(self, value: _CoverOrName) -> None: ...
    @property
    def Scan(self) -> kxsim.typing.Value:
        """A picture of its back."""
    @Scan.setter
    def Scan(self, value: kxsim.typing.Value) -> None: ...
    @property
    def Board(self) -> shelf.OakBoard | None:
        """Where it belongs."""
    @Board.setter
    def Board(self, value: shelf.OakBoard | None) -> None: ...

class _OakBoardValues(_BoardValues, total=False):
    Books: _BookValues | kxsim.typing.Many[_BookValues]
    Below: kxsim.typing.Many[shelf.Board]
    Heights: kxsim.typing.Many[float]

class OakBoard(Board):
    """A board of oak."""

    def __init__(
        self,
        model: mf.zero.Model,
        /,
        *first: kxsim.typing.Identity | _OakBoardValues,
        **values: Unpack[_OakBoardValues],
    ) -> None: ...
    @property
    def Books(self) -> mf.zero.Sequence[shelf.Book]:
        """What stands on it."""
    @property
    def Below(self) -> mf.zero.Sequence[shelf.Board]:
        """The boards that it rests on."""
    @property
    def Heights(self) -> mf.zero.PrimitiveSequence[float]:
        """Where its holes are, in metres."""
    def createIntoBooks(
        self,
        *first: kxsim.typing.Identity | _BookValues,
        **values: Unpack[_BookValues],
    ) -> shelf.Book:
        """Creates a Book in Books, with first values if there are any."""
