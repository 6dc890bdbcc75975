#!/usr/bin/env python3
"""check_tidy.py SOURCE BUILD: runs clang-tidy over the project's C++ files, several at once, and fails on any finding.

A file that was clean is not analysed again until it, a header it uses, its compile command, .clang-tidy or clang-tidy
itself changes. What was clean is remembered in the user's cache, whatever folder the checkout lies in. BUILD must be
built: the headers that a file uses are known from there.
"""

import hashlib
import json
import os
import shlex
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from functools import cache
from pathlib import Path

TIDY = "clang-tidy-19"
FORGET_AFTER = 30 * 24 * 3600  # seconds


def dependencies(build):
    """For each object file the files it was compiled from, as ninja recorded them."""
    listing = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    found = {}
    files = None
    for line in listing.splitlines():
        if line.startswith("    "):
            files.append(os.path.normpath(os.path.join(build, line.strip())))
        elif ": #deps" in line:
            files = found[line.partition(": #deps")[0]] = []
    return found


class Checker:
    def __init__(self, source, build):
        self.source = source
        self.build = build
        self.dependencies = dependencies(build)
        self.version = subprocess.run([TIDY, "--version"], check=True, capture_output=True, text=True).stdout
        base = os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache")
        self.clean = Path(base, "orvane", "clang-tidy")
        self.clean.mkdir(parents=True, exist_ok=True)

    def portable(self, text):
        return text.replace(self.build, "<build>").replace(self.source, "<source>")

    @cache
    def configuration(self, folder):
        """What the .clang-tidy files from the folder up to the source folder say."""
        here = Path(folder, ".clang-tidy")
        above = "" if folder == self.source else self.configuration(os.path.dirname(folder))
        return above + (here.read_text() if here.exists() else "")

    @cache
    def state(self, file):
        """What tells a change of the file: its content if it is the project's, else its size and time."""
        if file.startswith(self.source + "/"):
            return self.portable(file) + hashlib.sha256(Path(file).read_bytes()).hexdigest()
        status = os.stat(file)
        return f"{file} {status.st_size} {status.st_mtime_ns}"

    def mark_of(self, entry):
        """The file that exists if exactly this was clean before, or None if what it uses is not known."""
        words = shlex.split(entry["command"])
        files = self.dependencies.get(words[words.index("-o") + 1])
        if not files:
            return None
        # A header that is gone was dropped after the last build.
        states = [self.state(file) for file in sorted({entry["file"], *files}) if os.path.exists(file)]
        configuration = self.configuration(os.path.dirname(entry["file"]))
        everything = "\0".join([self.version, configuration, self.portable(entry["command"]), *states])
        return self.clean / hashlib.sha256(everything.encode()).hexdigest()

    def check(self, entry):
        """The findings, empty if clean, or None if it was clean before."""
        mark = self.mark_of(entry)
        if mark and mark.exists():
            mark.touch()
            return None
        result = subprocess.run([TIDY, "--quiet", "-p", self.build, entry["file"]], capture_output=True, text=True)
        if result.returncode != 0:
            finding = f"{result.stdout}{result.stderr}" or f"{entry['file']}: {TIDY} failed without a word"
            print(finding, flush=True)
            return finding
        if mark:
            mark.touch()
        return ""

    def forget_old_marks(self):
        for mark in self.clean.iterdir():
            if mark.stat().st_mtime < time.time() - FORGET_AFTER:
                mark.unlink(missing_ok=True)


def main(source, build):
    checker = Checker(source, build)
    with open(Path(build, "compile_commands.json"), encoding="utf-8") as commands:
        entries = [entry for entry in json.load(commands) if not entry["file"].startswith(build + "/")]
    if not entries:
        sys.exit("nothing to check")
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(checker.check, entries))
    checker.forget_old_marks()
    findings = [result for result in results if result]
    print(f"{len(entries)} files: {results.count(None)} unchanged, {results.count('')} clean, {len(findings)} with findings")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main(*(os.path.realpath(folder) for folder in sys.argv[1:3]))
