"""A wheel that carries the library is for its system, and for any Python 3; others are for all systems."""

import pathlib

from setuptools import Distribution, setup

here = pathlib.Path(__file__).parent / "kef"
how = {}
if any(here.glob("libkef.so*")) or (here / "kef.dll").exists():
    from wheel.bdist_wheel import bdist_wheel

    class WithLibrary(Distribution):
        def has_ext_modules(self):
            return True

    class SystemWheel(bdist_wheel):
        def get_tag(self):
            return "py3", "none", super().get_tag()[2]
    how = {"distclass": WithLibrary, "cmdclass": {"bdist_wheel": SystemWheel}}
setup(**how)
