"""The package as a whole: documents and docstrings, where the library is found, processes."""

import doctest
import os
import pathlib
import subprocess
import sys
import zipfile

import numpy as np
import pytest

import kef
import kef.interpolate
import kef.random
import kef.stats

ROOT = pathlib.Path(__file__).resolve().parents[2]
MODULES = [kef, kef.interpolate, kef.random, kef.stats]


@pytest.fixture
def bare_numbers(monkeypatch):
    """Examples show no scalar of NumPy as it is: NumPy 2 shows its type too."""
    show = sys.__displayhook__

    def check(value):
        if isinstance(value, (tuple, list)):
            for item in value:
                check(item)
        assert not isinstance(value, np.generic), f"shown as np.{value.dtype}(...) by NumPy 2"
    monkeypatch.setattr(sys, "__displayhook__", lambda value: (check(value), show(value))[1])


@pytest.mark.usefixtures("bare_numbers")
@pytest.mark.parametrize("module", MODULES, ids=lambda m: m.__name__)
def test_examples_of_docstrings(module):
    found = doctest.testmod(module)
    assert found.failed == 0 and found.attempted > 3
    public = [getattr(module, name) for name in module.__all__]
    assert all(">>>" in item.__doc__ for item in public if callable(item) and item.__module__ == module.__name__
               and not isinstance(item, type) and item.__name__ not in ("member", "from_bytes", "load"))


@pytest.mark.usefixtures("bare_numbers")
@pytest.mark.parametrize("document, least", [("README.md", 4), ("docs/python.md", 20)])
def test_sessions_of_documents(document, least):
    found = doctest.testfile(str(ROOT / document), module_relative=False)
    assert found.failed == 0 and found.attempted >= least


def test_a_missing_library_is_told_of(run_python, tmp_path):
    program = "try:\n    import kef\nexcept ImportError as error:\n    print(error)"
    told = run_python(program, KEF_LIBRARY="/nowhere/libkef.so")
    assert "KEF_LIBRARY" in told and "/nowhere/libkef.so: " in told
    other = tmp_path / "libkef.so.0.1"
    other.write_bytes(b"no library")
    assert f"{other}: " in run_python(program, KEF_LIBRARY=str(other))
    assert "not the KEF library" in run_python(program, KEF_LIBRARY="libc.so.6")
    environment = {name: value for name, value in os.environ.items() if name != "KEF_LIBRARY"}
    done = subprocess.run([sys.executable, "-c", program], env=environment | {"LD_LIBRARY_PATH": ""},
                          capture_output=True, text=True)
    assert done.returncode == 0 and ("libkef.so.0.1: " in done.stdout or done.stdout == "")


def test_a_wheel_carries_the_library(tmp_path):
    """Built without a compiler; it runs where nothing names the library."""
    pytest.importorskip("setuptools"), pytest.importorskip("wheel")
    tree = tmp_path / "python"
    (tree / "kef").mkdir(parents=True)
    for path in [*(ROOT / "python/kef").glob("*.py"), ROOT / "python/pyproject.toml", ROOT / "python/setup.py"]:
        (tree / path.relative_to(ROOT / "python")).write_bytes(path.read_bytes())
    (tree / "kef/libkef.so.0.1").write_bytes(pathlib.Path(os.environ["KEF_LIBRARY"]).read_bytes())
    subprocess.run([sys.executable, "-c", "from setuptools import build_meta; build_meta.build_wheel('..')"],
                   cwd=tree, check=True, capture_output=True)
    wheel, = tmp_path.glob("kef-*.whl")
    assert "-py3-none-" in wheel.name and "any" not in wheel.name  # of this system
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path / "installed")
    environment = {name: value for name, value in os.environ.items() if name != "KEF_LIBRARY"}
    shown = subprocess.run([sys.executable, "-c", "import kef; print(kef.exp(0.0), kef.__file__, kef.__version__)"],
                           env=environment | {"PYTHONPATH": str(tmp_path / "installed")}, check=True, cwd=tmp_path,
                           capture_output=True, text=True).stdout
    assert shown.split() == ["1.0", str(tmp_path / "installed/kef/__init__.py"), "0.1.0"]
    # An editable one refers to the tree.
    (tmp_path / "editable").mkdir()
    subprocess.run([sys.executable, "-c", "from setuptools import build_meta; build_meta.build_editable('../editable')"],
                   cwd=tree, check=True, capture_output=True)
    wheel, = (tmp_path / "editable").glob("kef-*.whl")
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path / "editable")
    program = f"import site; site.addsitedir({str(tmp_path / 'editable')!r}); import kef; print(kef.__file__)"
    shown = subprocess.run([sys.executable, "-c", program], env=environment | {"PYTHONPATH": ""}, check=True, cwd=tmp_path,
                           capture_output=True, text=True).stdout
    assert shown.strip() == str(tree / "kef/__init__.py")


PARALLEL = """
import os, kef, kef.random, kef.stats, numpy as np
stream, before = kef.random.MT19937(1), kef.exp(np.ones(1000))
generator = np.random.Generator(stream); generator.random()
s = kef.stats.Statistics(); s.update(np.arange(5.0))
child = os.fork()
if child == 0:
    same = (kef.exp(np.ones(1000)) == before).all() and generator.random() > 0
    try: kef.ln(-1.0, errors='raise')
    except FloatingPointError: os._exit(0 if same and s.mean == 2 else 2)
assert os.waitpid(child, 0)[1] == 0
print(kef.exp(0.0))
"""


@pytest.mark.skipif(not hasattr(os, "fork"), reason="no fork")
def test_a_forked_child_works(run_python):
    assert run_python(PARALLEL) == "1.0\n"


def test_the_interpreter_ends_with_everything_in_use(run_python):
    """Threads in calls, streams, tasks and functions that are used by what ends last."""
    told = run_python("""
import atexit
atexit.register(lambda: print(stream.normal(9).size, generator.random() < 1, s.minimum, spline(0.5)))  # called last
import sys, threading, kef, kef.interpolate, kef.random, kef.stats, numpy as np
x = np.linspace(1, 2, 1_000_000)
def work():
    stream = kef.random.MT19937(1)
    while True:
        kef.tgamma(x); stream.normal(100000); kef.ln([0.0], errors=lambda e: 1.0)
for i in range(3): threading.Thread(target=work, daemon=True).start()
stream, generator = kef.random.MT19937(1), np.random.Generator(kef.random.MRG32K3A(1))
s = kef.stats.Statistics("minimum", quantiles=[0.5]); s.update(x)
spline = kef.interpolate.LinearSpline([0.0, 1.0], [0.0, 1.0])
def share():
    while True: stream.uniform(100000); s.update(x); spline(x)
threading.Thread(target=share, daemon=True).start()
class Last:
    exp = kef.exp
    def __del__(self): Last.exp(1.0); generator.random()
sys.last = Last()
atexit.register(lambda: print(kef.exp(0.0), stream.uniform() < 1, s.count > 0))
""")
    assert told == "1.0 True True\n9 True 1.0 0.5\n"


def test_a_callers_mode_does_not_matter(run_python):
    """The start-up mode of the environment changes neither results nor what errstate says."""
    program = """
import kef, numpy as np
with np.errstate(all='raise'):
    try: kef.ln(0.0)
    except FloatingPointError: print('raised')
seen = []
kef.ln(np.zeros(2), errors=seen.append)
print(len(seen))
"""
    for mode in ("VTM_ERRMODE_IGNORE", "VTM_EP", ""):
        assert run_python(program, KEF_VTM_MODE=mode) == "raised\n2\n"
