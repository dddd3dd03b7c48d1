#!/usr/bin/env python3
"""translations.py SOURCE LUPDATE: checks that the translations are complete and fit the program's texts."""

import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

LITERAL = r'"(?:[^"\\]|\\.)*"'
ENGINE_TEXT = re.compile(rf"(?:QStringLiteral|translate)\(\s*((?:{LITERAL}[\s,]*)+)")
PLACES = re.compile(r"%L?\d|%n")

faults = []


def check(holds, fault):
    if not holds:
        faults.append(fault)


def messages_of(path):
    """(context, source) of every message, with its translation element."""
    found = {}
    for context in ElementTree.parse(path).getroot().iter("context"):
        for message in context.iter("message"):
            found[context.findtext("name"), message.findtext("source")] = message.find("translation")
    return found


def texts_of(translation):
    return [form.text or "" for form in translation.findall("numerusform")] or [translation.text or ""]


def check_current(path, sources, lupdate):
    """What lupdate finds in the sources is in the translation, and the other way round."""
    with tempfile.TemporaryDirectory() as folder:
        fresh = pathlib.Path(folder) / path.name
        fresh.write_bytes(path.read_bytes())
        subprocess.run([lupdate, "-silent", "-no-obsolete", "-locations", "none", sources, "-ts", fresh], check=True)
        ours, theirs = set(messages_of(path)), set(messages_of(fresh))
    for context, text in sorted(theirs - ours):
        check(False, f"{path.name}: {context}: not translated: {text!r} (`make translations` adds it)")
    for context, text in sorted(ours - theirs):
        check(False, f"{path.name}: {context}: no longer in the sources: {text!r} (`make translations` removes it)")


def check_translations(path):
    for (context, source), translation in messages_of(path).items():
        check(translation.get("type") is None, f"{path.name}: {context}: {translation.get('type')}: {source!r}")
        for text in texts_of(translation):
            fault = f"{path.name}: {context}: {source!r} and {text!r}"
            check(bool(text), f"{fault}: empty")
            check(sorted(PLACES.findall(source)) == sorted(PLACES.findall(text)), f"{fault}: other places for values")
            check(source.count("&") == text.count("&"), f"{fault}: other mnemonics")
            check(source.endswith(":") == text.endswith(":"), f"{fault}: one ends with a colon")
            check(source.endswith("...") == text.endswith("…"), f"{fault}: one ends with an ellipsis")
            check(source.count("\n") == text.count("\n"), f"{fault}: other lines")


def engine_texts(sources, folder):
    """Literals that begin with a capital: names of actions in the model and the tools, sentences in io and recovery."""
    for path in sorted((sources / folder).rglob("*")):
        if path.suffix in (".cpp", ".h"):
            for match in ENGINE_TEXT.finditer(path.read_text(encoding="utf-8")):
                literals = [text[1:-1].replace('\\"', '"') for text in re.findall(LITERAL, match.group(1))]
                yield path.name, "".join(text for text in literals if text != "names")


def check_engine(sources, listed):
    names = {text for context, text in listed if context == "names"}
    sentences = {text for context, text in listed if context == "sentences"}
    for folder in ("model", "tools"):
        for file, text in engine_texts(sources, folder):
            is_name = re.match(r"[A-Z]", text)
            check(not is_name or text in names, f"{file}: not in the list of names: {text!r}")
    for folder in ("io", "recovery"):
        for file, text in engine_texts(sources, folder):
            is_sentence = re.match(r"[A-Z].*(\.|%2)$", text, re.DOTALL)
            check(not is_sentence or text in sentences, f"{file}: not in the list of sentences: {text!r}")


def main(source_folder, lupdate):
    root = pathlib.Path(source_folder)
    files = sorted((root / "assets/translations").glob("*.ts"))
    check(bool(files), "there are no translations")
    for path in files:
        check_current(path, root / "src", lupdate)
        check_translations(path)
        check_engine(root / "src", messages_of(path))
    print("\n".join(faults) or "The translations are complete.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
