#!/usr/bin/env python3
"""manuals.py SOURCE PROGRAM...: compares what the programs say of themselves with their manuals and with what shells
complete.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

OPTION = re.compile(r"(?<![\w-])--[a-z][a-z-]*")


def run(*arguments, **options):
    done = subprocess.run(arguments, capture_output=True, text=True, check=False, **options)
    assert done.returncode == 0, f"{arguments}:\n{done.stdout}{done.stderr}"
    return done.stdout + done.stderr


def check_equal(ours, theirs, what):
    assert sorted(ours) == sorted(theirs), f"not as expected: {what}: {sorted(ours)} and {sorted(theirs)}"
    print(f"as expected: {what}", flush=True)


def headings(manual, section):
    """What the paragraphs of a section of the manual begin with, without markup."""
    text = re.search(rf'^\.SH "?{section}"?\n(.*?)(?=^\.SH|\Z)', manual, re.MULTILINE | re.DOTALL).group(1)
    found = re.findall(r"^\.TP\n(.*)$", text, re.MULTILINE)
    return [line.replace("\\-", "-").replace("\\ ", " ").split()[1].strip('"') for line in found]


def commands_of(help_text):
    return re.findall(r"^  ([a-z]+) \[?[A-Z]", help_text, re.MULTILINE)


def check_manual(name, help_text, manual):
    options = set(OPTION.findall(help_text))
    described = set(headings(manual, "OPTIONS")) - {"--"}
    check_equal(options, described, f"the manual of {name} describes every option")
    assert "exit status" in manual.lower(), name


def check_layout(path):
    check_equal(run("groff", "-man", "-Tutf8", "-ww", "-z", path), "", f"{path.name} is well-formed")


def script_commands_of(documentation):
    rows = re.findall(r"^\| (`.*?) \|", documentation, re.MULTILINE)
    return {name for row in rows for name in re.findall(r"`(\w+)`", row)}


def check_scripts(manual, documentation):
    text = re.search(r"^The commands are:\n(.*?)^\.SH", manual, re.MULTILINE | re.DOTALL).group(1)
    named = re.findall(r"^\.BR? (\w+)", text, re.MULTILINE)
    check_equal(named, script_commands_of(documentation), "the manual names every command of scripts")


def check_completions(folder, name, help_text):
    wanted = set(OPTION.findall(help_text)) | set(commands_of(help_text))
    for path in (folder / f"{name}.bash", folder / f"_{name}", folder / f"{name}.fish"):
        text = path.read_text()
        # The shell fish writes options without their dashes.
        missing = {word for word in wanted if word.lstrip("-") not in re.findall(r"[a-z][a-z-]*", text)}
        check_equal(missing, set(), f"{path.name} completes everything")
    for shell, path in (("bash", f"{name}.bash"), ("zsh", f"_{name}"), ("fish", f"{name}.fish")):
        if shutil.which(shell):
            run(shell, "-n", folder / path)


def completed(script, folder, *words):
    """What bash offers at the end of these words."""
    program = r'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); ' \
              r'$(complete -p "$1" | sed "s/.* -F \([^ ]*\).*/\1/") && printf "%s\n" "${COMPREPLY[@]}"'
    return [line for line in run("bash", "-c", program, "bash", script, *words, cwd=folder).splitlines() if line]


def check_bash(folder):
    cli = folder / "orvanel-cli.bash"
    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        for file in ("a photo.png", "steps.json", "drawing.tessel", "notes.txt"):
            (place / file).touch()
        (place / "folder").mkdir()
        everything = sorted(["a photo.png", "steps.json", "drawing.tessel", "notes.txt", "folder"])
        pictures = ["a photo.png", "drawing.tessel", "folder"]
        for words, expected in (
            ([""], ["check", "convert", "info", "recover", "run"]),
            (["c"], ["check", "convert"]),
            (["--"], ["--help", "--version"]),
            (["run", "--"], ["--time"]),
            (["info", "--"], []),
            (["info", ""], everything),
            (["info", "a"], ["a photo.png"]),
            (["convert", "x.tessel", ""], pictures),
            (["run", ""], ["folder", "steps.json"]),
            (["run", "--time", ""], ["folder", "steps.json"]),
            (["run", "steps.json", ""], everything),
            (["run", "steps.json", "in.png", ""], pictures),
            (["run", "steps.json", "in.png", "out.png", ""], []),
        ):
            found = completed(cli, place, "orvanel-cli", *words)
            assert sorted(found) == expected, f"{words}: {found}"
        found = completed(folder / "orvanel.bash", place, "orvanel", "--n")
        assert found == ["--new-window"], found
    print("as expected: bash completes commands, options and the right files")


def main():
    source = pathlib.Path(sys.argv[1])
    manuals, completions = source / "packaging/man", source / "packaging/completions"
    for program in map(pathlib.Path, sys.argv[2:]):
        help_text = run(program, "--help")
        path = manuals / f"{program.name}.1"
        manual = path.read_text()
        check_manual(program.name, help_text, manual)
        check_layout(path)
        if program.name == "orvanel-cli":
            check_equal(commands_of(help_text), headings(manual, "COMMANDS"), "the manual describes every command")
            check_scripts(manual, (source / "docs/scripts.md").read_text())
        if program.name != "orvanel-thumbnailer":
            check_completions(completions, program.name, help_text)
    check_bash(completions)


if __name__ == "__main__":
    main()
