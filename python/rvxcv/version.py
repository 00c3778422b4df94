"""Which library is loaded."""
from __future__ import annotations

from typing import NamedTuple

from ._array import ffi, lib

__all__ = ["LibraryVersion", "library_version"]


class LibraryVersion(NamedTuple):
    """The version record of the library."""

    major: int
    minor: int
    update: int
    revision: int
    variant: str
    name: str
    text: str
    build_date: str


def library_version() -> LibraryVersion:
    """The version of the library that is loaded.

    Examples
    --------
    >>> import rvxcv
    >>> rvxcv.library_version().variant
    'l9'
    """
    record = lib.rvxcvGetLibVersion()
    texts = (ffi.string(text).decode() for text in (record.variantCode, record.libraryName, record.versionText,
                                                    record.buildDateText))
    return LibraryVersion(record.versionMajor, record.versionMinor, record.versionUpdate, record.revision, *texts)
