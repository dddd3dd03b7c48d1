#!/usr/bin/env python3
"""file_format.py CLI DOCUMENTATION: runs the example of the file format's description on documents that the program
has written, and compares the pixels with those that the program exports.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

WIDTH, HEIGHT = 37, 23
FILLS = [
    {"do": "rectangle", "x": 3, "y": 2, "width": 20, "height": 15},
    {"do": "fill", "color": [0.9, 0.25, 0.1, 1]},
    {"do": "ellipse", "cx": 22, "cy": 12, "rx": 11, "ry": 8},
    {"do": "fill", "color": [0.15, 0.5, 0.75, 0.6]},
    {"do": "deselect"},
]
# A layer alone, and one under a mask in a folder above it.
PLAIN = [{"do": "addLayer", "name": "Plain"}, *FILLS, {"do": "select", "node": "Background"}, {"do": "removeNode"}]
MASKED = [
    *PLAIN,
    {"do": "addFolder", "name": "Folder"},
    {"do": "select", "node": "Plain"},
    {"do": "moveNode", "node": "Plain", "into": "Folder"},
    {"do": "ellipse", "cx": 15, "cy": 11, "rx": 9, "ry": 9, "feather": 4},
    {"do": "addMask"},
    {"do": "deselect"},
]


def run(*arguments, **options):
    return subprocess.run(arguments, check=True, capture_output=True, **options).stdout


def rgba(picture):
    """The RGBA bytes of a picture of either side."""
    return run("convert", picture, "-depth", "8", "rgba:-")


def example_of(documentation):
    blocks = re.findall(r"^```python\n(.*?)^```$", documentation.read_text(), re.MULTILINE | re.DOTALL)
    assert len(blocks) == 1, "the description has one example"
    return blocks[0]


class Case:
    def __init__(self, cli, example, folder, mode, steps):
        self.folder = pathlib.Path(folder)
        script = self.folder / "steps.json"
        script.write_text(json.dumps(steps))
        self.document = self.folder / "document.tessel"
        run(cli, "run", script, f"new:{WIDTH}x{HEIGHT}:{mode}", self.document)
        run(cli, "convert", self.document, self.folder / "exported.png")
        self.exported = rgba(self.folder / "exported.png")
        self.listing = run(sys.executable, example, self.document, cwd=self.folder).decode().splitlines()

    def identity(self, name):
        return next(line.split()[1] for line in self.listing if line.endswith(" " + name))

    def layer(self, name, suffix=""):
        return self.folder / f"{self.identity(name)}{suffix}.pam"


def greatest_difference(ours, theirs):
    assert len(ours) == len(theirs) == WIDTH * HEIGHT * 4, "pictures of one size"
    return max(abs(a - b) for i, (a, b) in enumerate(zip(ours, theirs))
               # The colour of a transparent pixel means nothing.
               if i % 4 == 3 or min(ours[i // 4 * 4 + 3], theirs[i // 4 * 4 + 3]) > 0)


def check_plain(case, mode):
    assert len(case.listing) == 1, case.listing
    ours = rgba(case.layer("Plain"))
    assert len(set(ours)) > 10, "a picture with something in it"
    difference = greatest_difference(ours, case.exported)
    # With 16 bits the two round to 8 bits from different numbers.
    assert difference <= (0 if mode in (0, 2) else 1), f"mode {mode} differs by {difference}"


def check_masked(case, mode):
    assert [line.lstrip().split()[0] for line in case.listing] == ["folder", "layer"], case.listing
    assert case.listing[1].startswith("  layer"), case.listing
    pixels = bytearray(rgba(case.layer("Plain")))
    mask = rgba(case.layer("Plain", ".mask"))
    assert 0 in mask[::4] and max(mask[::4]) > 200, "a mask with something in it"
    for i in range(3, len(pixels), 4):
        pixels[i] = round(pixels[i] * mask[i - 3] / 255)
    # The mask has been rounded to 8 bits too.
    difference = greatest_difference(bytes(pixels), case.exported)
    assert difference <= 1, f"mode {mode} differs by {difference}"


def main():
    cli, documentation = sys.argv[1], pathlib.Path(sys.argv[2])
    for mode in range(4):
        for steps, check in ((PLAIN, check_plain), (MASKED, check_masked)):
            with tempfile.TemporaryDirectory() as folder:
                example = pathlib.Path(folder) / "example.py"
                example.write_text(example_of(documentation))
                check(Case(cli, example, folder, mode, steps), mode)
                print(f"as expected: {check.__name__[6:]} layers in colour mode {mode}", flush=True)


if __name__ == "__main__":
    main()
