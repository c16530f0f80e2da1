"""archive.py FOLDER TIME: adds SHA256SUMS to a folder, and packs the folder into FOLDER.zip.

TIME, in seconds since 1970, becomes the time of every file. So the same files always make the same bytes.
"""

import hashlib
import sys
import time
import zipfile
from pathlib import Path


def files_of(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def checksum(path, algorithm):
    return hashlib.new(algorithm, path.read_bytes()).hexdigest()


def write_sums(folder):
    sums = folder / "SHA256SUMS"
    lines = [f"{checksum(path, 'sha256')}  {path.relative_to(folder).as_posix()}\n" for path in files_of(folder)]
    sums.write_text("".join(lines), encoding="utf-8")


def write_zip(folder, seconds):
    with zipfile.ZipFile(f"{folder}.zip", "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for path in files_of(folder):
            name = path.relative_to(folder.parent).as_posix()
            entry = zipfile.ZipInfo(name, time.gmtime(seconds)[:6])
            entry.create_system = 3  # 3 means Unix: programs then apply the file mode below when they unpack
            entry.external_attr = 0o100644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, path.read_bytes())


if __name__ == "__main__":
    target = Path(sys.argv[1])
    write_sums(target)
    write_zip(target, int(sys.argv[2]))
