"""The host package mf."""

from kxsim import _packages

_packages.adopt(__name__)
