import os
import subprocess
import sys

import numpy as np
import pytest


@pytest.fixture
def unaligned():
    """Gives a copy of an array whose numbers stand at odd addresses."""
    def copied(array):
        array = np.asarray(array)
        made = np.zeros(array.nbytes + 1, np.uint8)[1:].view(array.dtype).reshape(array.shape)
        made[...] = array
        assert not made.flags.aligned
        return made
    return copied


@pytest.fixture
def run_python():
    """Runs a program in a Python of its own; gives what it prints. Its status has to be 0."""
    def run(program, status=0, **environment):
        done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=60,
                              env=os.environ | environment)
        assert done.returncode == status, done.stderr
        return done.stdout + done.stderr
    return run
