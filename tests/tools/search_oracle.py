"""Compares what searches find with a plain filter over what `wqf import` prints.

    search_oracle.py WQF [--documents N] [--queries N] [--seed S] [--keep FOLDER]

Makes documents of both formats in many scripts, some broken and some that only a repair makes readable, and random queries
over the whole language. The filter folds texts by this language's own Unicode tables, walks through the query's tree, and
knows nothing of the program's tables.
"""
import argparse
import json
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import unicodedata
import zipfile
from xml.sax.saxutils import quoteattr, escape

AUTHORS = ["Ada Lovelace", "Grete Müller", "Zoe\u0308 O'Brien", "Σίσυφος Παπαδόπουλος", "ΣΊΣΥΦΟΣ", "Лев Толстой", "Артём Ёлкин",
           "שָׁלוֹם כהן", "شلوم كوهين", "محمّد علي", "山田太郎", "大阪城さん", "ガラス屋", "カラス屋", "ｶﾞﾗｽ屋", "김철수", "한글 사랑",
           "हिन्दी लेखक", "Saint-Exupéry", "SAINT EXUPERY", "François Œuvre", "Jürgen Groß", "JÜRGEN GROSS", "Ｆｕｌｌ Ｗｉｄｔｈ",
           "Đorđe", "Łukasz", "İstanbul ıssız", "ﬁlm ①②½", "e\u0301\u0323t\u0323\u0301e", "or", "NOT", "and", "x" * 70]
TEXTS = {
    "en": ["A gate with two towers and a hinged door.", "or not to be", "100% brick_built; \"quoted\" path\\to", "tower  tower tower"],
    "de": ["Ein Tor mit zwei Türmen und einer beweglichen Tür.", "Straße zum Fluß, STRASSE", "Donau\u00addampf\u00adschiff"],
    "el": ["Ο Σίσυφος και ο πύργος", "ΠΎΡΓΟΣ ΜΕ ΠΌΡΤΑ"],
    "ru": ["Башня с воротами. Ёж и ёлка", "Елка и еж"],
    "he": ["מִגְדָּל עם שער", "מגדל"],
    "ar": ["بُرْج مع بوابة", "برج وبوابة"],
    "ja": ["大阪城の門とガラスの塔", "カラスの塔", "二つの塔と開く扉のある門。", "阪大"],
    "ko": ["두 개의 탑과 문", "한글탑"],
    "hi": ["दो मीनारों वाला द्वार", "हिन्दी"],
    "zh-Hant": ["兩座塔的門", "大阪"],
}
KEYWORDS = ["Historic", "Straße", "gateway", "塔", "Πύργος", "train-set", "Ёлка", "100", "city's best"]
CREATORS = [("Builder", "4", "2"), ("Builder", "1", ""), ("Modeller 大阪", "", ""), ("Bäuer", "10", "0"), ("", "1", "")]
DESIGNS = [3001, 3003, 3004, 3005, 3062, 4100, 42, 4201, 9999]
FOLDERS = ["models", "models/50%_off", "models/sub (old)", "Größe", "大阪", "b\\s"]
NAMES = ["castle", "Tower 2", "gate_way", "Straße", "大阪城", "or", "a.b.c", "100%", "x-ray"]


# --- documents

def model_text(rng):
    version = rng.choice("5554")
    meta = []
    if rng.random() < .8:
        name, major, minor = rng.choice(CREATORS)
        meta.append(f"<Application name={quoteattr(name)} versionMajor={quoteattr(major)} versionMinor={quoteattr(minor)}/>")
    for author in rng.sample(AUTHORS, rng.choice([0, 1, 1, 2, 3])):
        meta.append(f"<Author name={quoteattr(author)}/>")
    for keyword in rng.sample(KEYWORDS, rng.choice([0, 0, 1, 2])):
        meta.append(f"<Brand name={quoteattr(keyword)}/>")
    for language in rng.sample(list(TEXTS), rng.choice([0, 1, 1, 2, 4])):
        lang = "" if language == "en" and rng.random() < .5 else f" lang={quoteattr(language.upper() if rng.random() < .1 else language)}"
        meta.append(f"<Description{lang}>{escape(rng.choice(TEXTS[language]))}</Description>")
    rng.shuffle(meta)
    designs = [rng.choice(DESIGNS) for _ in range(rng.choice([0, 1, 2, 5, 10, 60]))]
    if version == "5":
        bricks = "".join(f'<Brick refID="{i}" designID="{design}"><Part refID="{i}" designID="{design}" materials="1">'
                         f'<Bone refID="{i}" t="0,0,0"/></Part></Brick>' for i, design in enumerate(designs))
        body = f"<Bricks>{bricks}</Bricks>"
    else:
        parts = "".join(f'<Part refID="{i}" designID="{design}" materialID="26"/>' for i, design in enumerate(designs))
        body = f'<Scene><Model name="m"><Group refID="0" name="g">{parts}</Group></Model></Scene>'
    text = f'<?xml version="1.0" encoding="UTF-8"?><WQFML versionMajor="{version}"><Meta>{"".join(meta)}</Meta>{body}</WQFML>'
    if rng.random() < .08:
        text = text[:-rng.randrange(5, 30)]
    return text.encode()


def write_document(rng, path):
    text = model_text(rng)
    if path.suffix == ".wqfml":
        path.write_bytes(text)
        return
    method = rng.choice([zipfile.ZIP_DEFLATED] * 6 + [zipfile.ZIP_STORED, zipfile.ZIP_BZIP2, zipfile.ZIP_LZMA])
    with zipfile.ZipFile(path, "w", method) as archive:
        archive.writestr("IMAGE100.PNG", b"\x89PNG" + bytes(20))
        archive.writestr("IMAGE100.WQFML", text)
    data = path.read_bytes()
    fate = rng.random()
    if fate < .03:  # cut short
        path.write_bytes(data[:-rng.randrange(1, len(data) // 2)])
    elif fate < .08:  # something in front that the offsets do not know of
        path.write_bytes(b"#!front\n" + data)
    elif fate < .10:
        path.write_bytes(b"")
    elif fate < .12:  # the count of entries is wrong
        end = data.rindex(b"PK\5\6")
        path.write_bytes(data[:end + 8] + struct.pack("<HH", 9, 9) + data[end + 12:])


def write_documents(rng, root, count):
    for i in range(count):
        folder = root / rng.choice(FOLDERS)
        folder.mkdir(parents=True, exist_ok=True)
        write_document(rng, folder / f"{rng.choice(NAMES)} {i}{rng.choice(['.wqf', '.wqf', '.WQF', '.wqfml'])}")


# --- the plain filter

MARKS_GO = ("LATIN ", "GREEK ", "CYRILLIC ", "HEBREW ", "ARABIC ")
STAND_ALONE = ("CJK UNIFIED", "HIRAGANA", "KATAKANA", "HANGUL", "IDEOGRAPHIC")


def words_of(text):
    text = "".join(c for c in text if unicodedata.category(c) != "Cf" and not 0xFE00 <= ord(c) <= 0xFE0F)
    while (again := unicodedata.normalize("NFKD", text.casefold())) != text:
        text = again
    kept, optional = [], False
    for c in text:
        if unicodedata.category(c)[0] == "M":
            if optional:
                continue
        else:
            optional = unicodedata.category(c)[0] == "L" and unicodedata.name(c, "").startswith(MARKS_GO)
        kept.append(c)
    words, word, alone = [], "", False
    for c in unicodedata.normalize("NFC", "".join(kept)) + " ":
        kind = unicodedata.category(c)[0]
        here = kind == "L" and unicodedata.name(c, "").startswith(STAND_ALONE) or c == "ー"
        if kind not in "LMN" or (kind != "M" and word and (here or alone)):
            if word:
                words.append(word)
            word = ""
        if kind in "LMN":
            alone = here if kind != "M" else alone
            word += c
    return words


def has_phrase(texts, phrase, prefix):
    for words in texts:
        for start in range(len(words) - len(phrase) + 1):
            part = words[start:start + len(phrase)]
            if part[:-1] == phrase[:-1] and (part[-1].startswith(phrase[-1]) if prefix else part[-1] == phrase[-1]):
                return True
    return False


class Document:
    def __init__(self, record):
        attributes = record["attributes"]
        self.path = record["path"]
        self.error = "error" in record
        self.repaired = record.get("repaired", False)
        self.version = attributes.get("kMDItemVersion")
        self.bricks = attributes.get("com_zema_wqf_numberofbricks")
        self.languages = {language.lower() for language in attributes.get("kMDItemDescription", {})}
        self.texts = {
            "author": attributes.get("kMDItemAuthors", []),
            "creator": [attributes["kMDItemCreator"]] if "kMDItemCreator" in attributes else [],
            "keyword": attributes.get("kMDItemKeywords", []),
            "description": list(attributes.get("kMDItemDescription", {}).values()),
            "brick": attributes.get("com_zema_wqf_listofbricks", []),
            "name": [self.path.rsplit("/", 1)[1]],
        }
        self.texts = {field: [words_of(text) for text in texts] for field, texts in self.texts.items()}
        self.texts[None] = [text for texts in self.texts.values() for text in texts]


def ascii_lower(text):
    return "".join(chr(ord(c) + 32) if "A" <= c <= "Z" else c for c in text)


def like(path, piece):
    at, path = 0, ascii_lower(path)
    for part in ascii_lower(piece).split("*"):
        found = path.find(part, at)
        if found < 0:
            return False
        at = found + len(part)
    return True


def holds(query, document):
    kind, *rest = query
    if kind == "all":
        return all(holds(part, document) for part in rest)
    if kind == "any":
        return any(holds(part, document) for part in rest)
    if kind == "not":
        return not holds(rest[0], document)
    if kind == "words":
        return has_phrase(document.texts[rest[0]], words_of(rest[1]), rest[2])
    if kind == "bricks":
        return document.bricks is not None and (rest[0] is None or document.bricks >= rest[0]) and (rest[1] is None or document.bricks <= rest[1])
    if kind == "lang":
        return rest[0].lower() in document.languages
    if kind == "version":
        return document.version == rest[0]
    if kind == "path":
        return like(document.path, rest[0])
    return {"failed": document.error, "away": False, "repaired": document.repaired}[rest[0]]


# --- random queries, each as a tree and as a text

def random_words(rng, field):
    source = {"author": AUTHORS, "keyword": KEYWORDS, "creator": [" ".join(c) for c in CREATORS], "brick": [str(d) for d in DESIGNS],
              "description": [t for texts in TEXTS.values() for t in texts]}
    pool = source[field] if field else [text for texts in source.values() for text in texts] + NAMES
    parts = rng.choice(pool).split() or ["x"]
    start = rng.randrange(len(parts))
    text = " ".join(parts[start:start + rng.choice([1, 1, 1, 2, 3])])
    if rng.random() < .3:
        text = rng.choice([str.upper, str.lower, lambda t: unicodedata.normalize("NFD", t), lambda t: unicodedata.normalize("NFKC", t)])(text)
    if rng.random() < .25:
        text = text[:rng.randrange(1, len(text) + 1)]
    return text if words_of(text) and '"' not in text else "tower"


def random_condition(rng):
    kind = rng.choice(["any"] * 5 + ["author", "author", "creator", "keyword", "description", "brick", "bricks", "bricks", "lang",
                                     "version", "path", "is"])
    if kind in ("any", "author", "creator", "keyword", "description", "brick"):
        field = None if kind == "any" else kind
        text = random_words(rng, field)
        if field == "brick" and not text.isdigit():
            text = "3062"
        star = rng.random() < .2
        bare = text if not any(c in ' "():*\u3000\u00a0\t' for c in text) and text not in ("OR", "AND", "NOT") and rng.random() < .7 else f'"{text}"'
        return ("words", field, text, star), (f"{field}:" if field else "") + bare + ("*" if star else "")
    if kind == "bricks":
        low, high = sorted((rng.randrange(12), rng.randrange(70)))
        return rng.choice([(("bricks", low, None), f"bricks:{low}.."), (("bricks", None, high), f"bricks:..{high}"),
                           (("bricks", low, high), f"bricks:{low}..{high}"), (("bricks", low, low), f"bricks:{low}")])
    if kind == "lang":
        language = rng.choice(list(TEXTS) + ["DE", "zh", "xx"])
        return ("lang", language), f"lang:{language}"
    if kind == "version":
        version = rng.choice("456")
        return ("version", version), f"version:{version}"
    if kind == "path":
        piece = rng.choice(["models/", "50%_off", "sub (old)/", "大阪/", "größe", "Größe/", "b\\s/", ".WQFML", "/castle*1", "*tower*", "_", "%", "7.wqf", "MODELS/*OR"])
        return ("path", piece), f'path:"{piece}"' if any(c in " ()" for c in piece) else f"path:{piece}"
    state = rng.choice(["failed", "away", "repaired"])
    return ("is", state), f"is:{state}"


def random_query(rng, depth=0):
    """A tree, its text, and how tightly that binds: 0 for OR, 1 for AND, 2 for what stands by itself."""
    choice = rng.random()
    if depth > 3 or choice < .35:
        return (*random_condition(rng), 2)
    if choice < .55:
        tree, text, level = random_query(rng, depth + 1)
        return ("not", tree), "NOT " + (text if level == 2 else f"({text})"), 2
    operator, level, joint = ("all", 1, [" ", " AND ", "  "]) if choice < .82 else ("any", 0, [" OR "])
    trees, text = [], ""
    for _ in range(rng.choice([2, 2, 3])):
        tree, part, own = random_query(rng, depth + 1)
        trees.append(tree)
        text += (rng.choice(joint) if text else "") + (f"({part})" if own <= level or rng.random() < .1 else part)
    return (operator, *trees), text, level


# --- comparing

def run(command, **more):
    done = subprocess.run(command, capture_output=True, **more)
    if done.returncode not in (0, 1):
        sys.exit(f"{command}: exit {done.returncode}: {done.stderr.decode()}")
    return done.stdout


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("wqf")
    parser.add_argument("--documents", type=int, default=150)
    parser.add_argument("--queries", type=int, default=60)
    parser.add_argument("--where", type=int, default=5, help="how many of the queries `wqf import --where` is asked too")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", type=pathlib.Path)
    options = parser.parse_args()
    rng = random.Random(options.seed)
    with tempfile.TemporaryDirectory() as temporary:
        root = (options.keep or pathlib.Path(temporary)).resolve()
        write_documents(rng, root / "documents", options.documents)
        index = ["--index", str(root / "index.db")]
        run([options.wqf, "index", *index, str(root / "documents")])
        lines = run([options.wqf, "import", "--repair", "--format", "ndjson", str(root / "documents")]).splitlines()
        documents = [Document(json.loads(line)) for line in lines]
        wrong = hits = 0
        for number in range(options.queries):
            tree, text, _ = random_query(rng)
            expected = sorted(document.path for document in documents if holds(tree, document))
            found = {"search": run([options.wqf, "search", *index, "-0", text])}
            if number < options.where:
                found["import --where"] = run([options.wqf, "import", "--repair", "--where", text, "-0", str(root / "documents")])
            for command, output in found.items():
                paths = sorted(os.fsdecode(path) for path in output.split(b"\0")[:-1])
                if paths != expected:
                    wrong += 1
                    print(f"{command} {text!r}: {len(paths)} instead of {len(expected)}: too many {sorted(set(paths) - set(expected))[:3]}, "
                          f"missing {sorted(set(expected) - set(paths))[:3]}")
            hits += len(expected)
    failed = sum(document.error for document in documents)
    repaired = sum(document.repaired for document in documents)
    print(f"{len(documents)} documents, {failed} not imported, {repaired} repaired; {options.queries} queries, {hits} hits; {wrong} wrong")
    sys.exit(1 if wrong or not hits else 0)


if __name__ == "__main__":
    main()
