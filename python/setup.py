"""The package of Python. What it is made from is found by pkg-config: the headers, the library, the version."""
import pathlib
import sys

import setuptools

sys.path.insert(0, str(pathlib.Path(__file__).parent))  # a build front end may start somewhere else

from build_raw import pkg_config  # noqa: E402

setuptools.setup(
    name="rvxcv",
    version=pkg_config("--modversion"),
    description="Computer-vision primitives for two-dimensional images (x86-64 with AVX2)",
    packages=["rvxcv"],
    package_data={"rvxcv": ["py.typed"]},
    python_requires=">=3.9",
    setup_requires=["cffi>=1.15"],
    install_requires=["cffi>=1.15", "numpy>=1.20"],
    extras_require={"dask": ["dask[array]", "distributed"]},
    cffi_modules=["build_raw.py:builder"],
)
