"""Makes rvxcv._raw, the binding of every exported function, from the preprocessed headers of the installed library."""
import os
import pathlib
import re
import shlex
import subprocess
import tempfile

import cffi


def pkg_config(*arguments):
    """What pkg-config says of the installed library, as one line."""
    command = [os.environ.get("PKG_CONFIG", "pkg-config"), *arguments, "rvxcv"]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def declarations(include):
    """The headers' declarations as the parser of C takes them: preprocessed, the constants of macros behind them."""
    compiler = shlex.split(os.environ.get("CC", "cc"))
    headers = ["rvxcv.h", "rvxcore.h"]
    with tempfile.TemporaryDirectory() as folder:
        # The parser knows the types of <stdint.h>; an empty one keeps the C library's own declarations out.
        pathlib.Path(folder, "stdint.h").touch()
        source = "".join(f"#include <{header}>\n" for header in headers)
        preprocess = [*compiler, "-x", "c", "-E", "-P", "-nostdinc", f"-I{folder}", f"-I{include}", "-"]
        text = subprocess.run(preprocess, input=source, check=True, capture_output=True, text=True).stdout
    macros = re.compile(r"^#define +(RVX\w+) +UINT64_C\(", re.MULTILINE)
    for header in headers:
        names = macros.findall(pathlib.Path(include, header).read_text())
        text += "".join(f"static const uint64_t {name};\n" for name in names)
    return text


def builder():
    include = pkg_config("--variable=includedir")
    libraries = pkg_config("--variable=libdir")
    ffi = cffi.FFI()
    ffi.cdef(declarations(include))
    # A prefix that the loader does not search is remembered in the module.
    searched = os.environ.get("RVXCV_NO_RPATH") or libraries in ("/usr/lib", "/usr/lib/x86_64-linux-gnu")
    ffi.set_source(
        "rvxcv._raw",
        "#include <rvxcv.h>\n#include <rvxcore.h>\n",
        include_dirs=[include],
        library_dirs=[libraries],
        libraries=["rvxcvl9", "rvxcore"],
        extra_compile_args=["-O1", "-g0"],
        extra_link_args=[] if searched else [f"-Wl,-rpath,{libraries}"],
    )
    return ffi
