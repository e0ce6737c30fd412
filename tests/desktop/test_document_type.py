"""Files get the document type, or not, by their endings and first bytes."""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import skip

ARCHIVE, MODEL = "application/x-wqf", "application/x-wqfml+xml"
# A member's header: 30 bytes, then its name.
MEMBER = b"PK\3\4" + bytes(26)

FILES = [
    ("an archive", "a.wqf", MEMBER + b"textures/a.png", ARCHIVE),
    ("an ending in upper case", "B.WQF", MEMBER + b"IMAGE100.WQFML", ARCHIVE),
    ("an archive without an ending, whose model comes first", "nameless", MEMBER + b"IMAGE100.WQFML", ARCHIVE),
    ("an archive without an ending, of somebody else", "other", MEMBER + b"mimetype", "application/zip"),
    ("a bare model", "c.wqfml", b"<WQFML/>", MODEL),
    ("another file", "d.txt", b"wqf", "text/plain"),
]


def content_type(file, environment):
    out = subprocess.run(["gio", "info", "-a", "standard::content-type,standard::icon", file], env=environment, check=True,
                         capture_output=True, text=True).stdout
    values = dict(line.strip().split(": ", 1) for line in out.splitlines() if ": " in line)
    return values["standard::content-type"], values["standard::icon"]


def main(description, samples):
    skip.unless_installed("gio", "update-mime-database", "xmllint")
    subprocess.run(["xmllint", "--noout", description], check=True)
    faults = []
    with tempfile.TemporaryDirectory() as scratch:
        environment = dict(os.environ, HOME=scratch, XDG_DATA_HOME=scratch)
        packages = pathlib.Path(scratch, "mime/packages")
        packages.mkdir(parents=True)
        shutil.copy(description, packages)
        subprocess.run(["update-mime-database", packages.parent], env=environment, check=True)
        rows = [(what, pathlib.Path(scratch, name), wanted) for what, name, _, wanted in FILES]
        for (_, file, _), (_, _, content, _) in zip(rows, FILES):
            file.write_bytes(content)
        rows += [("a sample", file, ARCHIVE) for file in sorted(pathlib.Path(samples).glob("*.wqf"))]
        for what, file, wanted in rows:
            found, icon = content_type(file, environment)
            if found != wanted:
                faults.append(f"{what}: {file.name} is {found}, not {wanted}")
            if wanted in (ARCHIVE, MODEL) and "application-x-wqf" not in icon.split(", "):
                faults.append(f"{what}: {file.name} has no icon of ours among {icon}")
    print("\n".join(faults) or f"{len(rows)} files have the types that they should")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
