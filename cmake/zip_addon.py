"""zip_addon.py ZIP FILE...: a zip file with the same bytes wherever, whenever and by whom it is made."""
import sys
import zipfile

with zipfile.ZipFile(sys.argv[1], "w") as archive:
    for name in sys.argv[2:]:
        entry = zipfile.ZipInfo(name, (2000, 1, 1, 0, 0, 0))
        entry.create_system = 3  # Unix
        entry.external_attr = 0o100644 << 16
        entry.compress_type = zipfile.ZIP_DEFLATED
        with open(name, "rb") as file:
            archive.writestr(entry, file.read())
