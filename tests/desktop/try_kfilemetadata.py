#!/usr/bin/env python3
"""Has the file indexer of KDE index documents, and asks it for some: try_kfilemetadata.py PREFIX

PREFIX is where `cmake --install` or the package put the program. The indexer looks for extractors in one folder only, so ours
is linked there for the time of the run, which takes root. It needs baloo-kf5 and dbus, 120 MB, and is therefore no part of
the tests that run by themselves.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import skip
from documents import write_documents
from test_recoll import author, both, description, design, imported, keyword

COUNT = 40
EXTRACTORS = "libexec/kf5/kfilemetadata/externalextractors"

QUERIES = [
    ("author:lovelace", author("Lovelace")),
    ('author:"ada lovelace"', author("Ada Lovelace")),
    ("author:Grete keywords:railway", both(author("Grete"), keyword("Railway"))),
    ("author:Παπαδόπουλος", author("Παπαδόπουλος")),
    ("keywords:chateau", keyword("Château")),
    ('"two towers"', description("two towers")),
    ("φάρος", description("φάρος")),
    ("3062", design("3062")),
]


def searched(query, environment):
    out = subprocess.run(["baloosearch", "-t", "Document", query], env=environment, capture_output=True, text=True).stdout
    return sorted(line.strip("'") for line in out.splitlines() if line.strip("'").startswith("/"))


def wait_until_indexed(documents, environment):
    """Until the indexer has read all that there is, folders too: at most five minutes, since it lets all others go first."""
    total = 1 + sum(1 for _ in documents.rglob("*"))
    wanted = ["Indexer state: Idle", f"Total files indexed: {total}", "waiting for content indexing: 0"]
    for _ in range(600):
        status = subprocess.run(["balooctl", "status"], env=environment, capture_output=True, text=True).stdout
        if all(line in status for line in wanted):
            return
        time.sleep(0.5)
    print("the indexer did not end:", status)


def main(prefix):
    if "WQF_OWN_BUS" not in os.environ:  # so that a session's own indexer is left alone
        skip.unless_installed("baloo_file", "baloosearch", "dbus-run-session", "update-mime-database")
        os.environ["WQF_OWN_BUS"] = "1"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, __file__, prefix])
    extractor = next(pathlib.Path(prefix, "lib").glob(f"*/{EXTRACTORS}/wqf"))
    place = pathlib.Path("/usr/lib", extractor.parents[4].name, EXTRACTORS, "wqf")
    with tempfile.TemporaryDirectory(prefix="wqf-home-", dir="/var/tmp") as scratch:
        home = pathlib.Path(scratch)
        environment = dict(os.environ, HOME=scratch, QT_QPA_PLATFORM="offscreen", XDG_DATA_HOME=f"{scratch}/share",
                           PATH=f"{pathlib.Path(prefix).resolve()}/bin:{os.environ['PATH']}")
        for name in ("XDG_CONFIG_HOME", "XDG_CACHE_HOME"):
            environment.pop(name, None)
        packages = home / "share/mime/packages"
        packages.mkdir(parents=True)
        shutil.copy(pathlib.Path(prefix, "share/mime/packages/wqf.xml"), packages)
        subprocess.run(["update-mime-database", packages.parent], check=True, env=environment)
        documents = home / "docs"
        write_documents(documents, COUNT)
        (home / ".config").mkdir()
        (home / ".config/baloofilerc").write_text(
            "[Basic Settings]\nIndexing-Enabled=true\n[General]\nonly basic indexing=false\n"
            f"folders[$e]={documents}\n")
        linked, made = not place.exists(), not place.parent.exists()
        if linked:
            place.parent.mkdir(parents=True, exist_ok=True)
            place.symlink_to(extractor.resolve())
        indexer = subprocess.Popen(["baloo_file"], env=environment, stderr=subprocess.DEVNULL)
        try:
            wait_until_indexed(documents, environment)
            records = imported(f"{prefix}/bin/wqf", documents)
            faults = 0
            for query, holds in QUERIES:
                wanted = sorted(r["path"] for r in records if r["imported"] and holds(r["attributes"]))
                hits = searched(query, environment)
                print(f"{query}: {len(hits)} found, {len(wanted)} wanted")
                faults += hits != wanted
            sample = next(r["path"] for r in records if author("Lovelace")(r["attributes"]))
            print(subprocess.run(["balooshow", "-x", sample], env=environment, capture_output=True, text=True).stdout)
        finally:
            indexer.terminate()
            indexer.wait()
            if linked:
                place.unlink()
            if made:
                place.parent.rmdir()
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
