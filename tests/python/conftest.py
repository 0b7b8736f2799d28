import gc
import signal

import kxsim
import pytest
from kxsim import _host

# Where the tests run in the background, interrupts are ignored, by their children too.
signal.signal(signal.SIGINT, signal.default_int_handler)


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
