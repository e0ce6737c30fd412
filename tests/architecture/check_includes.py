"""Fails on an #include that the table of rooms does not allow.

A room may include itself and the rooms that stand before it in its row; foreign headers stay behind the walls named below.
"""
import pathlib
import re
import sys

# Room: what its files may include beside themselves.
ROOMS = {
    "platform": [],
    "core": ["platform"],
    "registry": ["core", "platform"],
    "storage": ["registry", "core"],
    "storage/local": ["storage", "registry", "core", "platform"],
    "storage/zip": ["storage", "registry", "core"],
    "xml": ["core"],
    "scene": ["core"],
    "loader": ["xml", "scene", "storage", "registry", "core"],
    "loader/format5": ["loader", "xml", "scene", "core"],
    "loader/format4": ["loader", "xml", "scene", "core"],
    "importer": ["loader/format5", "loader/format4", "loader", "xml", "scene", "storage/zip", "storage/local", "storage", "registry", "core", "platform"],
    "host/system": ["core", "platform"],
    "host/print": ["host/system", "loader", "xml", "scene", "core", "platform"],
    "host/plugin": ["host/print", "host/system", "platform"],
    "host/archive": ["host/system", "storage/zip", "storage", "core", "platform"],
    "host/documents": ["host/archive", "host/plugin", "host/print", "host/system", "importer", "loader", "xml", "scene",
                       "storage", "core", "platform"],
    "host/confinement": ["host/system"],
    "host/workers": ["host/confinement", "host/documents", "host/plugin", "host/print", "host/system", "core", "platform"],
    "host/handlers": ["host/archive", "host/documents", "host/print", "host/system"],
    "host/search": [],
    "host/index": ["host/search", "host/workers", "host/archive", "host/documents", "host/plugin", "host/print",
                   "host/system", "platform"],
    "tools/wqf": ["host/confinement", "host/workers", "host/archive", "host/documents", "host/handlers", "host/search",
                  "host/index", "host/plugin", "host/print", "host/system", "importer", "loader", "scene", "storage", "core",
                  "platform"],
    "tools/pages": ["tools/wqf"],
}

# Foreign header: the rooms that may include it, and in which files.
WALLS = {
    "zlib.h": (["storage/zip", "host/archive"], ".cpp"),
    "seccomp.h": (["host/confinement"], ".cpp"),
    "linux/": (["host/confinement"], ".cpp"),
    "expat.h": (["xml"], ".cpp"),
    "utf8proc.h": (["platform", "host/search"], ".cpp"),
    "archive.h": (["host/archive"], ".cpp"),
    "archive_entry.h": (["host/archive"], ".cpp"),
    "nlohmann/": (["host/print"], ".cpp"),
    "sqlite3.h": (["host/index"], ".cpp"),
    "CLI/": (["tools/wqf"], ".cpp"),
}

# Platform headers appear where platform types do: in the texts, the local back end, and around the plug-in.
PLATFORM_HEADERS = ("CoreFoundation/", "CoreServices/")
PLATFORM_ROOMS = ["platform", "core", "storage/local", "importer", "host/system", "host/print", "host/plugin", "host/documents",
                  "host/workers"]

INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]', re.MULTILINE)


def room_of(path):
    """The innermost room that a path stands in, or None."""
    inside = [room for room in ROOMS if path == room or path.startswith(room + "/")]
    return max(inside, key=len, default=None)


def faults_of(path, room, header):
    if header.startswith(PLATFORM_HEADERS):
        if room not in PLATFORM_ROOMS:
            yield f"{path}: platform header {header} in {room}/"
        return
    for wall, (rooms, ending) in WALLS.items():
        if header.startswith(wall) and (room not in rooms or not path.endswith(ending)):
            yield f"{path}: {header} may only stand in {ending} files of {', '.join(rooms)}"
    target = room_of(header)
    if target is not None and target != room and target not in ROOMS[room]:
        yield f"{path}: {room}/ may not include {header}"


def main(root):
    faults = []
    files = 0
    for room in ROOMS:
        for file in sorted((root / room).rglob("*")):
            path = file.relative_to(root).as_posix()
            if file.suffix not in (".h", ".cpp") or room_of(path) != room:
                continue
            files += 1
            for header in INCLUDE.findall(file.read_text(encoding="utf-8")):
                faults.extend(faults_of(path, room, header))
    print("\n".join(faults) or f"{files} files keep to the table")
    return 1 if faults or files == 0 else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
