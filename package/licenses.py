"""licenses.py FOLDER [--dlls]: copies the licence texts of the libraries that are linked statically.

With --dlls, copies only those of the libraries in the two DLLs. The texts come from the Debian packages of the
libraries, because the project does not hold them.
"""

import sys
from pathlib import Path
from typing import NamedTuple


class Library(NamedTuple):
    name: str
    licence: str  # in SPDX's terms. LicenseRef-mingw-w64 stands for the licences in mingw-w64.txt
    package: str  # the Debian package
    in_dlls: bool  # true: linked into the DLLs and the tools; false: only into the tools


LIBRARIES = [
    Library("gcc", "GPL-3.0-or-later WITH GCC-exception-3.1", "g++-mingw-w64-x86-64-posix", True),
    Library("mingw-w64", "LicenseRef-mingw-w64", "mingw-w64-x86-64-dev", True),
    Library("CLI11", "BSD-3-Clause", "libcli11-dev", False),
    Library("nlohmann-json", "MIT", "nlohmann-json3-dev", False),
]


def copy_licenses(folder, only_dlls):
    folder.mkdir()
    for library in LIBRARIES:
        if library.in_dlls or not only_dlls:
            text = Path("/usr/share/doc", library.package, "copyright").read_bytes()
            (folder / f"{library.name}.txt").write_bytes(text)
    (folder / "GPL-3.txt").write_bytes(Path("/usr/share/common-licenses/GPL-3").read_bytes())


if __name__ == "__main__":
    copy_licenses(Path(sys.argv[1]), sys.argv[2:] == ["--dlls"])
