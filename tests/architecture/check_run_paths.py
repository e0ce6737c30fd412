"""Fails on a run path that leads to wherever somebody happens to stand.

An empty or relative entry is looked up from the current folder, so that a library planted there would be loaded and run. What
was built and what is installed from it is looked at: every program and library that is ELF.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

RUN_PATH = re.compile(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]")


def run_paths(file):
    out = subprocess.run(["readelf", "-d", file], check=True, capture_output=True, text=True).stdout
    return RUN_PATH.findall(out)


def faults_below(folder):
    files = 0
    faults = []
    for file in sorted(folder.rglob("*")):
        if file.is_symlink() or not file.is_file() or file.open("rb").read(4) != b"\x7fELF":
            continue
        files += 1
        for path in run_paths(file):
            faults += [f"{file}: '{entry}' in [{path}]" for entry in path.split(":")
                       if not entry.startswith(("/", "$ORIGIN/"))]
    return files, faults


def main(cmake, build):
    with tempfile.TemporaryDirectory() as installed:
        subprocess.run([cmake, "--install", build, "--prefix", installed], check=True, capture_output=True)
        results = [faults_below(folder) for folder in (build / "bin", build / "lib", pathlib.Path(installed))]
    faults = [fault for _, found in results for fault in found]
    print("\n".join(faults) or f"{sum(files for files, _ in results)} files look nowhere but beside themselves")
    return 1 if faults or any(files < 3 for files, _ in results) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2])))
