import gc

import kxsim
import pytest
from kxsim import _host


@pytest.fixture
def model():
    return kxsim.Model()


@pytest.fixture
def counts():
    """What exists now: host arrays by kind, and Python objects that the collector knows."""

    def now():
        gc.collect()
        return _host.counts(), len(gc.get_objects())

    return now
