#!/usr/bin/python3
"""Regenerates LanguageModels.inc, the character statistics the encoding detector scores with.

Trained on prose that Debian packages install: translated manual pages (the manpages-* packages)
and, for languages without them, the word lists of hunspell dictionaries with some of their
inflected forms (unmunch, from hunspell-tools). Message catalogues are
left alone on purpose: bench/compare-encodings.py measures accuracy on them, so they must never be
training text. scripts/install-deps --models installs every package read here.

For alphabetic scripts a model is the frequency of character pairs (letters folded to lower case,
everything that is not a letter one boundary) where at least one of the two is not ASCII: pairs of
ASCII letters say nothing about a legacy encoding. For Chinese, Japanese and Korean a model is the
frequency of single characters. Frequencies are kept as whole levels, -log2 of the share, so the
table stays small and the detector adds integers.

    quoddle/strings/data/train-language-models.py > quoddle/strings/data/LanguageModels.inc
"""

import collections
import glob
import gzip
import math
import re
import subprocess
import sys
import tempfile
import unicodedata

MAN = "/usr/share/man"
HUNSPELL = "/usr/share/hunspell"
MAX_TEXT = 4_000_000  # characters read per language; more changes no level
PAIRS_KEPT = 1200
CHARACTERS_KEPT = 3000
DEEPEST_LEVEL = 20

# (name, script, sources); a source is ("man", folder), ("dic", file, encoding) for a hunspell
# dictionary's stems, or ("forms", file, encoding) for inflected forms made from them.
LANGUAGES = [
    ("de", "latin", [("man", "de")]),
    ("fr", "latin", [("man", "fr")]),
    ("es", "latin", [("man", "es")]),
    ("it", "latin", [("man", "it")]),
    ("nl", "latin", [("man", "nl")]),
    ("pt", "latin", [("man", "pt_BR"), ("man", "pt")]),
    ("sv", "latin", [("man", "sv")]),
    ("da", "latin", [("man", "da")]),
    ("nb", "latin", [("man", "nb")]),
    ("fi", "latin", [("man", "fi")]),
    ("cs", "latin", [("man", "cs")]),
    ("pl", "latin", [("man", "pl")]),
    ("hu", "latin", [("man", "hu")]),
    ("ro", "latin", [("man", "ro")]),
    ("sk", "latin", [("dic", "sk_SK.dic", "utf-8"), ("forms", "sk_SK.dic", "utf-8")]),
    ("hr", "latin", [("man", "hr"), ("dic", "hr_HR.dic", "utf-8")]),
    ("sl", "latin", [("man", "sl"), ("dic", "sl_SI.dic", "iso8859-2"),
                     ("forms", "sl_SI.dic", "iso8859-2")]),
    ("ca", "latin", [("dic", "ca.dic", "utf-8")]),
    ("gl", "latin", [("dic", "gl_ES.dic", "utf-8")]),
    ("eu", "latin", [("dic", "eu.dic", "utf-8")]),
    ("tr", "latin", [("man", "tr")]),
    ("lt", "latin", [("dic", "lt_LT.dic", "iso8859-13"), ("forms", "lt_LT.dic", "iso8859-13")]),
    ("lv", "latin", [("dic", "lv_LV.dic", "utf-8"), ("forms", "lv_LV.dic", "utf-8")]),
    ("et", "latin", [("dic", "et_EE.dic", "iso8859-15"), ("forms", "et_EE.dic", "iso8859-15")]),
    ("ru", "cyrillic", [("man", "ru")]),
    ("uk", "cyrillic", [("man", "uk")]),
    ("mk", "cyrillic", [("man", "mk")]),
    ("sr", "cyrillic", [("man", "sr")]),
    ("bg", "cyrillic", [("dic", "bg_BG.dic", "utf-8"), ("forms", "bg_BG.dic", "utf-8")]),
    ("be", "cyrillic", [("dic", "be_BY.dic", "utf-8"), ("forms", "be_BY.dic", "utf-8")]),
    ("el", "greek", [("man", "el")]),
    ("ar", "arabic", [("dic", "ar.dic", "utf-8")]),
    ("fa", "arabic", [("dic", "fa_IR.dic", "utf-8"), ("forms", "fa_IR.dic", "utf-8")]),
    ("he", "hebrew", [("dic", "he_IL.dic", "utf-8"), ("forms", "he_IL.dic", "utf-8")]),
    ("ja", "japanese", [("man", "ja")]),
    ("zh_CN", "simplifiedChinese", [("man", "zh_CN")]),
    ("zh_TW", "traditionalChinese", [("man", "zh_TW")]),
    ("ko", "korean", [("man", "ko"), ("dic", "ko.dic", "utf-8")]),
]
# Mixtures of a family's languages, each member given the same share: text that borrows words
# from several of them (English with "naïve", "Müller" and "São Paulo", a list of place names)
# reads better under a mixture than under any one language, and would otherwise find no model.
POOLS = [
    ("western", "latin", ["de", "fr", "es", "it", "nl", "pt", "sv", "da", "nb", "fi", "ca", "gl",
                          "eu"]),
    ("central", "latin", ["cs", "sk", "pl", "hu", "ro", "hr", "sl"]),
]
POOL_SHARE = 400_000  # characters of folded text taken from each member

IDEOGRAPHIC = {"japanese", "simplifiedChinese", "traditionalChinese", "korean"}

# Pages that list a character set row by row teach every character equally often.
CHARACTER_TABLES = re.compile(r"^(iso[-_]?8859|latin|koi8|charsets|cp12|ascii|utf|unicode|armscii|tis-620)",
                              re.IGNORECASE)
ESCAPES = re.compile(r"\\(f[BIRP]|f\(..|f\[[^]]*\]|\(..|\[[^]]*\]|\*\(..|\*.|s[-+]?\d|.)")


def manual_text(folder):
    """The running text of every manual page in a folder: requests dropped, escapes removed."""
    pieces = []
    for path in sorted(glob.glob(f"{MAN}/{folder}/man*/*")):
        if CHARACTER_TABLES.search(path.rsplit("/", 1)[1]):
            continue
        opener = gzip.open if path.endswith(".gz") else open
        try:
            with opener(path, "rb") as file:
                raw = file.read().decode("utf-8")
        except (OSError, UnicodeDecodeError):
            continue
        for line in raw.splitlines():
            if line.startswith(("'", '.\\"')):
                continue
            if line.startswith("."):
                # Macros such as .B and .SH carry text after their name.
                line = line.partition(" ")[2]
            pieces.append(ESCAPES.sub(" ", line))
    return "\n".join(pieces)


def dictionary_text(name, encoding):
    with open(f"{HUNSPELL}/{name}", encoding=encoding, errors="replace") as file:
        next(file)  # the word count
        return " ".join(line.split("/")[0].strip() for line in file)


FORMS_STEP = 50  # one stem in this many is expanded into its inflected forms
FORMS_BYTES = 40_000_000  # of the expansion's output, at most


def inflected_text(name, encoding):
    """Inflected forms of an evenly spread sample of a hunspell dictionary's stems, expanded with
    its affix rules by hunspell-tools' unmunch. The stems alone lack the endings, and in Baltic
    and Slavic languages the endings carry most of the letters a legacy encoding differs in
    (Lithuanian -ų, -ė)."""
    with open(f"{HUNSPELL}/{name}", encoding=encoding, errors="replace") as file:
        next(file)
        stems = [line.rstrip("\r\n") for i, line in enumerate(file) if i % FORMS_STEP == 0]
    affixes = f"{HUNSPELL}/{name.removesuffix('.dic')}.aff"
    with tempfile.NamedTemporaryFile("w", encoding=encoding, errors="replace", suffix=".dic") as sample:
        sample.write(f"{len(stems)}\n" + "\n".join(stems) + "\n")
        sample.flush()
        expansion = subprocess.run(["unmunch", sample.name, affixes], capture_output=True,
                                   timeout=300, check=True).stdout[:FORMS_BYTES]
    return " ".join(expansion.decode(encoding, errors="replace").split())


def is_letter(character):
    return unicodedata.category(character)[0] in "LM"


def folded(text):
    """Lower case, letters kept, every run of anything else one space."""
    out = []
    for character in unicodedata.normalize("NFC", text).lower():
        out.append(character if is_letter(character) else " ")
    return re.sub(" +", " ", "".join(out))


def levels(counter, kept):
    total = sum(counter.values())
    rows = []
    for key, count in counter.most_common(kept):
        level = min(DEEPEST_LEVEL, max(1, round(-math.log2(count / total))))
        rows.append((level, key))
    return sorted(rows)


def literal(keys):
    out = []
    for key in keys:
        for character in key:
            code = ord(character)
            out.append(character if code < 0x80 and character != "\\" else f"\\u{code:04X}")
    return 'u"' + "".join(out) + '"'


def model_rows(script, text):
    text = text[:MAX_TEXT]
    counter = collections.Counter()
    if script in IDEOGRAPHIC:
        for character in text:
            if ord(character) >= 0x80 and ord(character) <= 0xFFFF:
                counter[character] += 1
        return levels(counter, CHARACTERS_KEPT)
    for first, second in zip(text, text[1:]):
        if (ord(first) >= 0x80 or ord(second) >= 0x80) and max(ord(first), ord(second)) <= 0xFFFF:
            counter[first + second] += 1
    return levels(counter, PAIRS_KEPT)


def main():
    print("// Generated by quoddle/strings/data/train-language-models.py; do not edit.")
    print("// clang-format off")
    print("constexpr LanguageModel languageModels[] = {")
    texts = {}
    models = []
    for name, script, sources in LANGUAGES:
        text = ""
        for source in sources:
            if source[0] == "man":
                text += manual_text(source[1]) + "\n"
            elif source[0] == "forms":
                text += inflected_text(source[1], source[2]) + "\n"
            else:
                text += dictionary_text(source[1], source[2]) + "\n"
        texts[name] = folded(text)
        models.append((name, script, texts[name]))
    for name, script, members in POOLS:
        models.append((name, script, " ".join(texts[member][:POOL_SHARE] for member in members)))
    for name, script, text in models:
        rows = model_rows(script, text)
        if not rows:
            sys.exit(f"no training text for {name}: run scripts/install-deps --models")
        # Where each level's keys begin in the key string, in keys; the last entry is their count.
        starts = [sum(1 for level, _ in rows if level < depth) for depth in range(1, DEEPEST_LEVEL + 2)]
        keys = literal(key for _, key in rows)
        print(f'    {{"{name}", Script::{script}, {{{", ".join(map(str, starts))}}},\n'
              f'     {keys}}},')
    print("};")
    print("// clang-format on")


if __name__ == "__main__":
    main()
