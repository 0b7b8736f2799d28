"""The host package kinetra."""

from kxsim import _packages

_packages.adopt(__name__)
