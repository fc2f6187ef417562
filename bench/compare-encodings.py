#!/usr/bin/python3
"""How often `quod encoding`, uchardet and Python's chardet name an encoding that gives the text back.

The corpus is made from the message catalogues (.mo files) that Debian packages install under
/usr/share/locale, never from the detector's training text: each language's translations are
joined into samples of 100 bytes, 1 KB and 10 KB in every legacy encoding that language is written
in, plus UTF-8, UTF-16 with and without a byte-order mark, plain ASCII (the catalogues' English
message ids), and mostly-ASCII text with a few stray Latin-1 bytes. An answer is right when
decoding the sample with it gives back exactly the original text (one leading byte-order mark is
dropped, as every decoder here does). The table shows, per family and size, the share each
detector gets right; "no answer" counts as not right, and a wrong non-empty answer on ASCII or
mostly-ASCII text is counted apart as a confident wrong answer.

The catalogues are split by a hash of their package's name into two halves: the detector's
thresholds and priors are tuned on the "tuning" half, and the figures worth quoting come from the
"held-out" half (the default), text no decision was ever fitted to. `--other-quod` adds a column
for a second build of `quod` (say, the main branch's), to show that a change loses nothing.

    bench/compare-encodings.py --quod build/release/tools/quod/quod [--other-quod PATH]
        [--half held-out|tuning] [--samples 3] [--keep DIR]

Needs Debian's Python 3 with python3-chardet, and the uchardet command
(scripts/install-deps --dev installs both).
"""

import argparse
import codecs
import collections
import glob
import hashlib
import os
import random
import re
import struct
import subprocess
import sys
import tempfile

import chardet

SIZES = (100, 1000, 10000)

# family -> [(language folder, [Python codec names])]
LEGACY = {
    "Western": [(lang, ["cp1252", "latin-1", "iso8859-15"]) for lang in
                ("de", "fr", "es", "it", "nl", "pt", "pt_BR", "sv", "da", "fi", "nb", "ca", "gl",
                 "eu")],
    "Central European": [(lang, ["cp1250", "iso8859-2"]) for lang in
                         ("pl", "cs", "hu", "sk", "sl", "hr", "ro")],
    "Cyrillic": [("ru", ["cp1251", "koi8-r", "iso8859-5", "cp866", "mac-cyrillic"]),
                 ("uk", ["cp1251", "koi8-u"]), ("bg", ["cp1251", "iso8859-5"]),
                 ("mk", ["cp1251"]), ("sr", ["cp1251"]), ("be", ["cp1251"])],
    "Greek": [("el", ["cp1253", "iso8859-7"])],
    "Turkish": [("tr", ["cp1254", "iso8859-9"])],
    "Arabic": [("ar", ["cp1256", "iso8859-6"]), ("fa", ["cp1256"])],
    "Hebrew": [("he", ["cp1255", "iso8859-8"])],
    "Baltic": [("lt", ["cp1257", "iso8859-13", "iso8859-4"]), ("lv", ["cp1257", "iso8859-13"]),
               ("et", ["cp1257", "iso8859-13"])],
    "Japanese": [("ja", ["cp932", "iso2022_jp"])],
    "Chinese": [("zh_CN", ["gb2312", "gbk", "gb18030"]), ("zh_TW", ["big5", "cp950"])],
    "Korean": [("ko", ["euc_kr", "cp949", "iso2022_kr"])],
}
UNICODE_LANGUAGES = ("de", "pl", "ru", "el", "tr", "ar", "he", "lt", "ja", "zh_CN", "ko", "fr")
STRAY_WORDS = ["café", "naïve", "résumé", "Zürich", "São Paulo", "© 2023", "Müller", "jalapeño"]


def catalogue_messages(path):
    """(msgid, msgstr) pairs of a compiled catalogue."""
    with open(path, "rb") as file:
        data = file.read()
    magic = struct.unpack("<I", data[:4])[0]
    order = "<" if magic == 0x950412DE else ">"
    count, originals, translations = struct.unpack(order + "3I", data[8:20])
    pairs = []
    for i in range(count):
        length, offset = struct.unpack(order + "2I", data[originals + 8 * i:originals + 8 * i + 8])
        tlength, toffset = struct.unpack(order + "2I",
                                         data[translations + 8 * i:translations + 8 * i + 8])
        try:
            msgid = data[offset:offset + length].decode("utf-8")
            msgstr = data[toffset:toffset + tlength].decode("utf-8")
        except UnicodeDecodeError:
            continue
        if msgid and msgstr:
            pairs.append((msgid.split("\0")[0], msgstr.split("\0")[0]))
    return pairs


def half_of(path):
    """Which half a catalogue belongs to, decided by its package's name alone, so that a language
    never has one package's messages in both halves."""
    package = os.path.basename(path).removesuffix(".mo")
    return "tuning" if hashlib.sha256(package.encode()).digest()[0] % 2 == 0 else "held-out"


def messages(language, half, originals=False):
    found = []
    for path in sorted(glob.glob(f"/usr/share/locale/{language}/LC_MESSAGES/*.mo")):
        if half_of(path) != half:
            continue
        for msgid, msgstr in catalogue_messages(path):
            text = msgid if originals else msgstr
            if "\r" not in text and "\0" not in text:
                found.append(text)
    return found


def sample(pieces, encoding, size, rng):
    """Text of the messages, from a random start, whose encoding is as long as `size` or a little
    less; None when the language has too little text."""
    encodable = [p for p in pieces if _encodes(p, encoding)]
    if len(encodable) < 5:
        return None
    start = rng.randrange(len(encodable))
    text = ""
    i = start
    while len(text.encode(encoding, "strict")) < size and i < start + len(encodable):
        text += encodable[i % len(encodable)] + "\n"
        i += 1
    while len(text) > 1 and len(text.encode(encoding)) > size:
        text = text[:-1]
    return text


def _encodes(text, encoding):
    try:
        text.encode(encoding)
        return True
    except UnicodeEncodeError:
        return False


def build_corpus(samples_per_cell, seed, half):
    rng = random.Random(seed)
    corpus = []  # (family, size, language, encoding label, bytes, text)
    for family, rows in LEGACY.items():
        for language, encodings in rows:
            pieces = messages(language, half)
            for encoding in encodings:
                for size in SIZES:
                    for _ in range(samples_per_cell):
                        text = sample(pieces, encoding, size, rng)
                        if text:
                            corpus.append((family, size, language, encoding,
                                           text.encode(encoding), text))
    for language in UNICODE_LANGUAGES:
        pieces = messages(language, half)
        for size in SIZES:
            for _ in range(samples_per_cell):
                text = sample(pieces, "utf-8", size, rng)
                corpus.append(("UTF-8", size, language, "utf-8", text.encode("utf-8"), text))
                for encoding in ("utf-16", "utf-16-le", "utf-16-be"):
                    text = sample(pieces, "utf-16-le", size, rng)
                    corpus.append(("UTF-16", size, language, encoding, text.encode(encoding),
                                   text))
    english = messages("de", half, originals=True)
    for size in SIZES:
        for _ in range(samples_per_cell * 4):
            text = sample(english, "ascii", size, rng)
            corpus.append(("ASCII", size, "en", "ascii", text.encode("ascii"), text))
            words = text.split(" ")
            for _ in range(max(1, size // 400)):
                words[rng.randrange(len(words))] = rng.choice(STRAY_WORDS)
            mixed = " ".join(words)
            encoding = rng.choice(["latin-1", "cp1252"])
            corpus.append(("mostly ASCII", size, "en", encoding, mixed.encode(encoding), mixed))
    return corpus


def python_codec(name):
    fixes = {"x-mac-cyrillic": "mac-cyrillic", "uhc": "cp949", "maccyrillic": "mac-cyrillic",
             "mac-centraleurope": "mac-latin2", "windows-31j": "cp932"}
    if not name:
        return None
    name = fixes.get(name.lower(), name)
    try:
        return codecs.lookup(name).name
    except LookupError:
        return None


def gives_back(data, codec, text):
    if codec is None:
        return False
    try:
        decoded = data.decode(codec)
    except (UnicodeDecodeError, LookupError):
        return False
    return decoded.removeprefix("\ufeff") == text


def our_codecs():
    """Encoding number -> the IANA name the framework writes for it."""
    table = os.path.join(os.path.dirname(__file__), "..", "quoddle", "strings", "data",
                         "encodings.tsv")
    names = {}
    with open(table, encoding="utf-8") as file:
        for line in file:
            fields = line.rstrip("\n").split("\t")
            if len(fields) >= 5 and fields[1].isdigit():
                names[int(fields[1])] = fields[4]
    return names


def run_batches(command, paths, pattern):
    answers = {}
    for start in range(0, len(paths), 200):
        batch = paths[start:start + 200]
        output = subprocess.run(command + batch, capture_output=True, text=True).stdout
        for line in output.splitlines():
            match = re.match(pattern, line)
            if match:
                answers[match.group(1)] = match.group(2)
    return answers


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--quod", default="build/release/tools/quod/quod")
    parser.add_argument("--other-quod", help="a second quod binary to compare with, shown as "
                        "the column \"main\"")
    parser.add_argument("--half", choices=("held-out", "tuning"), default="held-out")
    parser.add_argument("--samples", type=int, default=3, help="samples per language, encoding "
                        "and size")
    parser.add_argument("--seed", type=int, default=22)
    parser.add_argument("--keep", help="write the corpus into this folder and keep it")
    parser.add_argument("--wrong", action="store_true", help="list every sample we got wrong")
    arguments = parser.parse_args()

    corpus = build_corpus(arguments.samples, arguments.seed, arguments.half)
    folder = arguments.keep or tempfile.mkdtemp(prefix="compare-encodings-")
    os.makedirs(folder, exist_ok=True)
    paths = []
    for i, (family, size, language, encoding, data, _) in enumerate(corpus):
        path = os.path.join(folder, f"{i:05d}-{language}-{encoding}-{size}.txt")
        with open(path, "wb") as file:
            file.write(data)
        paths.append(path)

    names = our_codecs()
    quod_answers = r"^(.*): .* \((\d+)\)(?:, \w+)?$"
    ours = run_batches([arguments.quod, "encoding"], paths, quod_answers)
    other = (run_batches([arguments.other_quod, "encoding"], paths, quod_answers)
             if arguments.other_quod else {})
    theirs = run_batches(["uchardet"], paths, r"^(.*): (.*)$")
    if len(paths) == 1:
        theirs = {paths[0]: subprocess.run(["uchardet", paths[0]], capture_output=True,
                                           text=True).stdout.strip()}

    detectors = ("quod",) + (("main",) if arguments.other_quod else ()) + ("uchardet", "chardet")
    right = collections.defaultdict(lambda: collections.Counter())
    total = collections.Counter()
    confident_wrong = collections.Counter()
    for path, (family, size, language, encoding, data, text) in zip(paths, corpus):
        number = int(ours.get(path, "0"))
        other_number = int(other.get(path, "0"))
        answers = {
            "quod": python_codec(names.get(number)) if number else None,
            "main": python_codec(names.get(other_number)) if other_number else None,
            "uchardet": python_codec(theirs.get(path, "").strip().lower()
                                     if theirs.get(path, "").strip() != "unknown" else None),
            "chardet": python_codec(chardet.detect(data)["encoding"]),
        }
        total[(family, size)] += 1
        for detector in detectors:
            codec = answers[detector]
            ok = gives_back(data, codec, text)
            right[detector][(family, size)] += ok
            if not ok and codec is not None and family in ("ASCII", "mostly ASCII"):
                confident_wrong[detector] += 1
            if detector == "quod" and not ok and arguments.wrong:
                print(f"wrong: {path} {encoding} -> {names.get(number)}", file=sys.stderr)

    families = list(LEGACY) + ["UTF-8", "UTF-16", "ASCII", "mostly ASCII"]
    print(f"{len(corpus)} samples from the {arguments.half} half of the catalogues; right answers in % (samples per row in brackets)\n")
    print(f"| family | size | {' | '.join(detectors)} |")
    print(f"|---|---|{'---:|' * len(detectors)}")
    for family in families:
        for size in SIZES + ("all",):
            keys = [(family, s) for s in SIZES] if size == "all" else [(family, size)]
            count = sum(total[k] for k in keys)
            if count == 0:
                continue
            cells = [f"{100 * sum(right[d][k] for k in keys) / count:.1f}" for d in detectors]
            label = "all" if size == "all" else f"{size} B"
            print(f"| {family} | {label} ({count}) | {' | '.join(cells)} |")
    count = sum(total.values())
    cells = [f"**{100 * sum(right[d].values()) / count:.1f}**" for d in detectors]
    print(f"| **overall** | ({count}) | {' | '.join(cells)} |")
    print("\nconfident wrong answers on ASCII and mostly-ASCII text: " +
          ", ".join(f"{d} {confident_wrong[d]}" for d in detectors))
    if not arguments.keep:
        for path in paths:
            os.remove(path)
        os.rmdir(folder)


if __name__ == "__main__":
    main()
