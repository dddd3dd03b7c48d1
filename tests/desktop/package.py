#!/usr/bin/env python3
"""package.py BUILD: packs what the build has made, lays the package out in an empty root, and lets the tools that
judge such files judge it.
"""

import configparser
import gzip
import os
import pathlib
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile

PROGRAMS = ("orvanel", "orvanel-cli", "orvanel-thumbnailer")
NAME = "com.fennimoor.orvanel"
MIME = "application/vnd.fennimoor.orvanel+zip"
SIDES = (16, 22, 24, 32, 48, 64, 128, 256, 512)


def run(*arguments, **options):
    done = subprocess.run(arguments, capture_output=True, text=True, check=False, **options)
    assert done.returncode == 0, f"{shlex.join(map(str, arguments))}:\n{done.stdout}{done.stderr}"
    return done.stdout


def check(is_true, what):
    assert is_true, f"not as expected: {what}"
    print(f"as expected: {what}", flush=True)


def expected_files():
    yield from (f"usr/bin/{program}" for program in PROGRAMS)
    yield from (f"usr/share/man/man1/{program}.1.gz" for program in PROGRAMS)
    yield f"usr/share/applications/{NAME}.desktop"
    yield f"usr/share/metainfo/{NAME}.metainfo.xml"
    yield f"usr/share/mime/packages/{NAME}.document.xml"
    yield f"usr/share/thumbnailers/{NAME}.thumbnailer"
    for context, name in (("apps", NAME), ("mimetypes", MIME.replace("/", "-"))):
        yield f"usr/share/icons/hicolor/scalable/{context}/{name}.svg"
        yield from (f"usr/share/icons/hicolor/{side}x{side}/{context}/{name}.png" for side in SIDES)
    for program in PROGRAMS[:2]:
        yield f"usr/share/bash-completion/completions/{program}"
        yield f"usr/share/zsh/vendor-completions/_{program}"
        yield f"usr/share/fish/vendor_completions.d/{program}.fish"
    for document in ("copyright", "changelog.Debian.gz", "file-format.md.gz", "scripts.md.gz",
                     "user-guide.md.gz"):
        yield f"usr/share/doc/orvanel/{document}"
    yield "usr/share/lintian/overrides/orvanel"


def entries_of(path, group):
    parser = configparser.ConfigParser(interpolation=None, delimiters="=")
    parser.optionxform = str
    parser.read(path)
    return dict(parser[group])


def check_layout(root):
    found = sorted(str(path.relative_to(root)) for path in root.rglob("*") if path.is_file())
    check(found == sorted(expected_files()), "every file in its place, and no other")
    for path in root.rglob("*.gz"):
        assert gzip.decompress(path.read_bytes()), path
        assert path.read_bytes()[4:8] == bytes(4), f"{path} has a time in it"
    for side in SIDES:
        for picture in (root / f"usr/share/icons/hicolor/{side}x{side}").rglob("*.png"):
            assert struct.unpack(">II", picture.read_bytes()[16:24]) == (side, side), picture
    for program in PROGRAMS:
        assert run(root / "usr/bin" / program, "--version"), program


def check_control(package):
    fields = run("dpkg-deb", "--field", package, "Depends", "Package", "Section", "Maintainer")
    for needed in ("libqt6widgets6", "libqt6svg6", "libzip4", "libgif7", "libc6"):
        assert needed in fields, f"{needed} is not among the dependencies:\n{fields}"
    check("Section: graphics" in fields, "the package says what it needs")


def check_desktop_entry(root):
    path = root / f"usr/share/applications/{NAME}.desktop"
    run("desktop-file-validate", path)
    entry = entries_of(path, "Desktop Entry")
    action = entries_of(path, "Desktop Action new-window")
    types = entry["MimeType"].split(";")
    assert MIME in types and "image/png" in types and "image/heif" in types
    assert shlex.split(action["Exec"]) == ["orvanel", "--new-window"]
    check((root / "usr/bin" / shlex.split(entry["Exec"])[0]).exists(), "the menu entry is valid")
    run("appstreamcli", "validate", "--no-net", root / f"usr/share/metainfo/{NAME}.metainfo.xml")


def check_mime_type(root, folder):
    source = root / f"usr/share/mime/packages/{NAME}.document.xml"
    run("xmllint", "--noout", source)
    database = folder / "mime"
    (database / "packages").mkdir(parents=True)
    for path in (source, pathlib.Path("/usr/share/mime/packages/freedesktop.org.xml")):
        shutil.copy(path, database / "packages")
    run("update-mime-database", database)
    assert f"50:{MIME}:*.tessel" in (database / "globs2").read_text().splitlines()
    check(f"{MIME} application/zip" in (database / "subclasses").read_text().splitlines(),
          "a desktop knows documents, and that they are archives")


def check_thumbnailer(root, folder):
    """Does what a file manager does."""
    document, thumbnail = folder / "a picture.tessel", folder / "thumbnail.png"
    script = folder / "script.json"
    script.write_text("[]")
    run(root / "usr/bin/orvanel-cli", "run", script, "new:300x150:2", document)
    entry = entries_of(root / f"usr/share/thumbnailers/{NAME}.thumbnailer", "Thumbnailer Entry")
    assert entry["MimeType"] == f"{MIME};"
    values = {"%s": "128", "%i": str(document), "%o": str(thumbnail)}
    command = [values.get(word, word) for word in shlex.split(entry["Exec"])]
    run(*command, env=dict(os.environ, PATH=f"{root}/usr/bin"))
    check(struct.unpack(">II", thumbnail.read_bytes()[16:24]) == (128, 64), "a file manager gets its thumbnail")


def main():
    build = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        run("cpack", "--config", build / "CPackConfig.cmake", "-B", folder / "made")
        package, = (folder / "made").glob("*.deb")
        root = folder / "root"
        run("dpkg-deb", "--extract", package, root)
        check_layout(root)
        check_control(package)
        check_desktop_entry(root)
        check_mime_type(root, folder)
        check_thumbnailer(root, folder)
        run("lintian", "--allow-root", "--fail-on", "error,warning", package)
        print("as expected: nothing for lintian to complain about")


if __name__ == "__main__":
    main()
