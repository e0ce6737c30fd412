"""Recoll, set up by the program and with an empty home folder, finds the documents that it should.

What it should find a plain filter says, over what `wqf import` prints of the same documents.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unicodedata
from urllib.parse import unquote

import skip
from documents import write_documents

COUNT = 200


def words_of(text):
    """As the indexer has them: without case and accents."""
    plain = "".join(c for c in unicodedata.normalize("NFKD", text) if not unicodedata.combining(c))
    return re.findall(r"\w+", plain.casefold())


def has(texts, phrase):
    """Whether one of the texts holds the words one after the other."""
    wanted = words_of(phrase)
    return any(words_of(text)[i:i + len(wanted)] == wanted for text in texts for i in range(len(words_of(text))))


def author(phrase):
    return lambda values: has(values.get("kMDItemAuthors", []), phrase)


def keyword(phrase):
    return lambda values: has(values.get("kMDItemKeywords", []), phrase)


def creator(phrase):
    return lambda values: has([values.get("kMDItemCreator", "")], phrase)


def description(phrase):
    return lambda values: has(values.get("kMDItemDescription", {}).values(), phrase)


def design(number):
    return lambda values: number in values["com_zema_wqf_listofbricks"]


def bricks(least, most):
    return lambda values: least <= values["com_zema_wqf_numberofbricks"] <= most


def both(first, second):
    return lambda values: first(values) and second(values)


QUERIES = [
    ("author:lovelace", author("Lovelace")),
    ('author:"ada lovelace"', author("Ada Lovelace")),
    ("author:ada -author:lovelace", both(author("Ada"), lambda values: not author("Lovelace")(values))),
    ("author:müller", author("Müller")),
    ("author:angstrom", author("Ångström")),
    ("author:παπαδόπουλος", author("Παπαδόπουλος")),
    ("author:громов", author("Громов")),
    ("author:team", author("Team")),
    ("keywords:harbour", keyword("Harbour")),
    ("keywords:chateau", keyword("Château")),
    ('keywords:"night & fog"', keyword("Night Fog")),
    ("wqfcreator:modeller", creator("Modeller")),
    ('wqfcreator:"builder 4.2"', creator("Builder 4 2")),
    ('"two towers"', description("two towers")),
    ("φάρος", description("φάρος")),
    ("башнями", description("башнями")),
    ("wqfdesign:3062", design("3062")),
    ("wqfbricks:40..120", bricks(40, 120)),
    ("wqfbricks:..5", bricks(0, 5)),
    ("pier keywords:railway wqfbricks:10..", both(description("pier"), both(keyword("Railway"), bricks(10, 1 << 32)))),
]


def imported(program, folder):
    out = subprocess.run([program, "import", "--format", "ndjson", folder], capture_output=True, text=True).stdout
    return [json.loads(line) for line in out.splitlines()]


def found(query, environment):
    out = subprocess.run(["recollq", "-b", "-n", str(10 * COUNT), query], env=environment, check=True, capture_output=True,
                         text=True).stdout
    return sorted(unquote(line.removeprefix("file://")) for line in out.splitlines() if line.startswith("file://"))


def main(program):
    skip.unless_installed("recollindex", "recollq")
    faults = []
    with tempfile.TemporaryDirectory() as scratch:
        home, documents = pathlib.Path(scratch, "home"), pathlib.Path(scratch, "documents")
        configuration = home / ".recoll"
        configuration.mkdir(parents=True)
        # Without stems, so that a word finds itself alone.
        (configuration / "recoll.conf").write_text(f"topdirs = {documents}\nloglevel = 2\nindexstemminglanguages =\nidxniceprio = 0\n")
        write_documents(documents, COUNT)
        environment = dict(os.environ, HOME=str(home), RECOLL_CONFDIR=str(configuration),
                           PATH=f"{pathlib.Path(program).resolve().parent}:{os.environ['PATH']}")
        subprocess.run([program, "setup", "recoll"], env=environment, check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["recollindex"], env=environment, check=True, capture_output=True)

        records = imported(program, documents)
        for query, holds in QUERIES:
            wanted = sorted(record["path"] for record in records if record["imported"] and holds(record["attributes"]))
            hits = found(query, environment)
            if not wanted or hits != wanted:
                faults.append(f"{query}: {len(hits)} found, {len(wanted)} wanted; "
                              f"amiss: {sorted(set(hits) ^ set(wanted))[:5]}")
        if len(found("rclcat:wqf", environment)) != COUNT:
            faults.append("what is no document is not found by its name")
    print("\n".join(faults) or f"{len(QUERIES)} queries found what they should among {COUNT} documents, "
          f"{sum(not record['imported'] for record in records)} of which are none")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
