"""The host package kinetra."""

from typing import TYPE_CHECKING

from kxsim import _packages

if TYPE_CHECKING:
    from kinetra import simmanager as simmanager

_packages.adopt(__name__)
