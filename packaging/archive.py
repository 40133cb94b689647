# SPDX-License-Identifier: MIT
"""Packs a folder into a reproducible archive: sorted, with fixed dates, owners and modes.

usage: archive.py FOLDER ARCHIVE.zip|ARCHIVE.tar.gz

All entries are in one folder named after the archive. The date is SOURCE_DATE_EPOCH, in UTC.
"""
import gzip
import io
import os
import pathlib
import sys
import tarfile
import time
import zipfile


def is_program(path):
    return path.read_bytes()[:4] == b"\x7fELF" or path.suffix == ".exe"


def write_zip(archive, entries, date):
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as out:
        for name, path in entries:
            entry = zipfile.ZipInfo(name, time.gmtime(date)[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3  # Unix, so that the modes apply
            entry.external_attr = (0o755 if is_program(path) else 0o644) << 16
            out.writestr(entry, path.read_bytes())


def write_tar(archive, entries, date):
    with open(archive, "wb") as file, gzip.GzipFile("", "wb", 9, file, date) as packed:
        with tarfile.open(fileobj=packed, mode="w", format=tarfile.USTAR_FORMAT) as out:
            for name, path in entries:
                entry = tarfile.TarInfo(name)
                entry.size, entry.mtime = path.stat().st_size, date
                entry.mode = 0o755 if is_program(path) else 0o644
                out.addfile(entry, io.BytesIO(path.read_bytes()))


def main(folder, archive):
    suffix = ".tar.gz" if archive.name.endswith(".tar.gz") else archive.suffix
    top = archive.name[: -len(suffix)]
    files = (path for path in folder.rglob("*") if path.is_file())
    entries = sorted((f"{top}/{path.relative_to(folder).as_posix()}", path) for path in files)
    write = {".zip": write_zip, ".tar.gz": write_tar}[suffix]
    write(archive, entries, int(os.environ["SOURCE_DATE_EPOCH"]))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
