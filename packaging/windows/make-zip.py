#!/usr/bin/env python3
"""make-zip.py FOLDER FILE.zip: packs the folder, under its own name. Names that are not ASCII are UTF-8 and marked as
such, so that a Windows in any language reads them; Debian's zip does not mark them."""
import pathlib
import sys
import zipfile

folder = pathlib.Path(sys.argv[1])
with zipfile.ZipFile(sys.argv[2], "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
    for path in sorted(folder.rglob("*")):
        archive.write(path, path.relative_to(folder.parent))
