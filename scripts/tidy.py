#!/usr/bin/env python3
"""Runs clang-tidy over our sources, several at a time, and skips those found clean before.

    tidy.py BUILD JOBS

BUILD holds compile_commands.json. A file is looked at again when it, one of our headers that it includes,
its command or .clang-tidy has changed. Exits with 1 when there is anything to say.
"""

import concurrent.futures
import hashlib
import json
import os
import re
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FOLDERS = ("src", "tests", "bench", "fuzz")
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
NOISE = re.compile(r"^\d+ warnings? (and \d+ errors? )?generated\.$|^Suppressed |^Use -header-filter")

contents = {}


def read(path):
    if path not in contents:
        try:
            with open(path, "rb") as file:
                contents[path] = file.read()
        except OSError:
            contents[path] = None
    return contents[path]


def own_files(path, seen):
    """`path` and every file of ours that it includes, directly or not."""
    if path in seen or read(path) is None:
        return seen
    seen.add(path)
    for match in INCLUDE.findall(read(path)):
        for folder in ("src", "tests", "bench", "fuzz", os.path.dirname(os.path.relpath(path, ROOT))):
            own_files(os.path.normpath(os.path.join(ROOT, folder, match.decode())), seen)
    return seen


def digest(entry):
    state = hashlib.sha256(entry["command"].encode())
    for folder in ("", os.path.relpath(entry["file"], ROOT).split(os.sep)[0]):
        state.update(read(os.path.join(ROOT, folder, ".clang-tidy")) or b"")
    for path in sorted(own_files(entry["file"], set())):
        state.update(path.encode() + b"\0" + read(path))
    return state.hexdigest()


def check(build, entry):
    run = subprocess.run(
        ["clang-tidy", "--quiet", "-p", build, entry["file"]],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, cwd=ROOT,
    )
    said = "\n".join(line for line in run.stdout.splitlines() if not NOISE.match(line))
    return run.returncode == 0, said


def main(build, jobs):
    with open(os.path.join(build, "compile_commands.json")) as file:
        entries = {entry["file"]: entry for entry in json.load(file)}
    ours = tuple(os.path.join(ROOT, folder) + os.sep for folder in FOLDERS)
    entries = [entry for path, entry in sorted(entries.items()) if path.startswith(ours)]

    memory_path = os.path.join(build, "clean.json")
    memory = {}
    if os.path.exists(memory_path):
        with open(memory_path) as file:
            memory = json.load(file)
    digests = {entry["file"]: digest(entry) for entry in entries}
    waiting = [entry for entry in entries if memory.get(entry["file"]) != digests[entry["file"]]]
    print(f"clang-tidy: {len(waiting)} of {len(entries)} files to look at", flush=True)

    faulty, done, spoken = [], 0, time.monotonic()
    # The longest first, so that the last of them doesn't keep the others' processors waiting.
    waiting.sort(key=lambda entry: -len(read(entry["file"])))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        running = {pool.submit(check, build, entry): entry["file"] for entry in waiting}
        for finished in concurrent.futures.as_completed(running):
            path = running[finished]
            is_clean, said = finished.result()
            done += 1
            if is_clean:
                memory[path] = digests[path]
            else:
                faulty.append(os.path.relpath(path, ROOT))
                print(said, flush=True)
            if time.monotonic() - spoken > 30:
                spoken = time.monotonic()
                print(f"  {done} of {len(waiting)}", flush=True)
    with open(memory_path, "w") as file:
        json.dump(memory, file, indent=0, sort_keys=True)
    if faulty:
        print(f"clang-tidy: faults in {len(faulty)} files: {' '.join(sorted(faulty))}")
        return 1
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], int(sys.argv[2])))
