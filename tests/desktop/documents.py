"""Documents of both formats with metadata in many scripts, the same in every run; one in ten is none."""
import pathlib
import random
import zipfile
from xml.sax.saxutils import escape, quoteattr

AUTHORS = ["Ada Lovelace", "Grete Müller", "Zoë Ångström", "Νίκος Παπαδόπουλος", "Иван Громов", "山田 太郎", "Ada Berg",
           "R&D <Team>", "Conan O'Neil"]
KEYWORDS = ["Harbour", "Historic", "Railway", "Château", "Night & Fog", "Eisenbahn"]
CREATORS = [("Builder", "4", "2"), ("Builder", "5", None), ("Modeller", None, None)]
DESCRIPTIONS = {
    "en": ["A small castle with two towers.", "A lighthouse on a pier.\nIts lamp turns.", "A railway station, <unfinished>.",
           "The pier without a lighthouse."],
    "de": ["Eine kleine Burg mit zwei Türmen.", "Ein Leuchtturm auf der Mole.", "Ein Bahnhof an der Hauptstraße."],
    "da": ["Et lille slot med to tårne.", "Et fyrtårn på molen."],
    "el": ["Ένας φάρος σε μια προβλήτα."],
    "ru": ["Замок с двумя башнями."],
    "ja": ["二つの塔と開く扉のある門。"],
}
DESIGNS = [3001, 3002, 3003, 3062, 3941, 4100, 42, 970]


def metadata(draw):
    parts = []
    if draw.random() < 0.8:
        name, major, minor = draw.choice(CREATORS)
        versions = "".join(f' {key}="{value}"' for key, value in (("versionMajor", major), ("versionMinor", minor)) if value)
        parts.append(f'<Application name="{name}"{versions}/>')
    parts += [f"<Author name={quoteattr(name)}/>" for name in draw.sample(AUTHORS, draw.randrange(3))]
    parts += [f"<Brand name={quoteattr(name)}/>" for name in draw.sample(KEYWORDS, draw.randrange(3))]
    for language in draw.sample(sorted(DESCRIPTIONS), draw.randrange(4)):
        parts.append(f'<Description lang="{language}">{escape(draw.choice(DESCRIPTIONS[language]))}</Description>')
    return "<Meta>" + "".join(parts) + "</Meta>"


def model(draw, markup):
    count = draw.choice([0, 1, 3, 10, 40, 120])
    designs = [draw.choice(draw.sample(DESIGNS, 3)) for _ in range(count)]
    if markup == 5:
        bricks = "".join(f'<Brick refID="{i}" designID="{design}"><Part refID="{i}" designID="{design}" materials="21">'
                         f'<Bone refID="{i}"/></Part></Brick>' for i, design in enumerate(designs, 1))
        return f'<WQFML versionMajor="5">{metadata(draw)}<Bricks>{bricks}</Bricks></WQFML>'
    parts = "".join(f'<Part refID="{i}" designID="{design}" materialID="21"/>' for i, design in enumerate(designs))
    return (f'<WQFML versionMajor="4">{metadata(draw)}<Scene><Model><Group refID="0">{parts}</Group></Model></Scene>'
            '</WQFML>')


def write_documents(folder, count):
    """Fills the folder, in sub-folders whose names and files' names need care too."""
    draw = random.Random(13)
    for i in range(count):
        place = pathlib.Path(folder, ["", "a & b", "größe", "100 %"][i % 4])
        place.mkdir(parents=True, exist_ok=True)
        text = model(draw, draw.choice([4, 5, 5]))
        fault = draw.random()
        if fault < 0.05:
            text = text[:len(text) // 2]
        if draw.random() < 0.1:
            (place / f"document {i}.wqfml").write_text(text, encoding="utf-8")
            continue
        file = place / f"document {i}.wqf"
        if fault > 0.95:
            file.write_bytes(draw.randbytes(500))
            continue
        with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("textures/a.txt", "a brick")
            archive.writestr("IMAGE100.WQFML", text)
