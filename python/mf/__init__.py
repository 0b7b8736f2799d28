"""The host package mf."""

from typing import TYPE_CHECKING

from kxsim import _packages

if TYPE_CHECKING:
    from mf import zero as zero

_packages.adopt(__name__)
