#!/usr/bin/env python3
"""check_edges.py SOURCE LIBRARIES LINKS: fails when a file includes, or a library links, what its layer must not know, and
when files include each other in a circle. A header and its sources count as one file.

SOURCE is the source folder, LIBRARIES the table of layers, LINKS a file with one line for each library: its CMake
target and the project's targets that it links.
"""

import re
import subprocess
import sys
from pathlib import Path, PurePosixPath

INCLUDE = re.compile(r'^[ \t]*#[ \t]*(?:include|import)[ \t]*(["<])([^">]+)[">]', re.MULTILINE)
SUFFIXES = (".h", ".cpp", ".mm")
# Not part of the program: they may look into every layer, and no layer may look into them.
OUTSIDE = ("tests", "tools")


class Layers:
    def __init__(self, table):
        self.levels = {}
        self.names = {}
        self.shared = set()
        for line in table.splitlines():
            words = line.partition("#")[0].split()
            if not words:
                continue
            first, second, third = words
            if first == "shared":
                self.shared.add((second, third))
            else:
                self.levels[second] = int(first)
                self.names[third] = second

    def library_of(self, path):
        """The library whose folder is the nearest one around the file, or None."""
        around = (str(folder) for folder in PurePosixPath(path).parents)
        return next((self.names[folder] for folder in around if folder in self.names), None)

    def allows(self, user, used):
        return user == used or self.levels[used] < self.levels[user]


def project_files(source):
    listed = subprocess.run(
        ["git", "-C", source, "ls-files", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True, text=True,
    ).stdout.splitlines()
    # A header made from a template when the build is configured is included as if it lay beside it.
    names = {file.removesuffix(".in") for file in listed if Path(source, file).is_file()}
    return {name for name in names if name.endswith(SUFFIXES)}


def include_faults(source, files, layers):
    for file in sorted(files):
        if file.startswith(OUTSIDE):
            continue
        user = layers.library_of(file)
        if user is None:
            yield f"{file}: its folder belongs to no library"
            continue
        if not Path(source, file).exists():
            continue
        for bracket, included in INCLUDE.findall(Path(source, file).read_text(encoding="utf-8")):
            if included in files:
                used = layers.library_of(included)
                if used is None:
                    yield f"{file}: includes {included}, which belongs to no library"
                elif not layers.allows(user, used) and (included, user) not in layers.shared:
                    yield f"{file}: {user} must not include {included} of {used}"
            elif bracket == '"' and included != PurePosixPath(file).stem + ".moc":
                yield f'{file}: "{included}" is not the path of a file from the source folder'


def includes(source, files):
    """For each file without its suffix the project's files that it includes, likewise."""
    graph = {}
    for file in sorted(files):
        if not file.startswith(OUTSIDE) and Path(source, file).exists():
            used = {included for _, included in INCLUDE.findall(Path(source, file).read_text(encoding="utf-8"))}
            graph.setdefault(unit_of(file), set()).update(unit_of(included) for included in used & files)
    return graph


def unit_of(file):
    return re.sub(r"(_linux|_mac|_windows)?\.\w+$", "", file)


def circle_faults(graph):
    done = set()

    def visit(unit, path):
        if unit in path:
            circle = path[path.index(unit):]
            if len(circle) > 1:
                yield " -> ".join([*circle, unit]) + ": include each other in a circle"
        elif unit not in done:
            for used in sorted(graph.get(unit, ())):
                yield from visit(used, [*path, unit])
            done.add(unit)

    for unit in sorted(graph):
        yield from visit(unit, [])


def link_faults(links, layers):
    for line in links.splitlines():
        user, *used = [target.removeprefix("orvane_") for target in line.split()]
        for name in (user, *used):
            if name not in layers.levels:
                yield f"orvane_{name}: not in the table of libraries"
            elif user in layers.levels and not layers.allows(user, name):
                yield f"orvane_{user} must not link orvane_{name}"


def main(source, table, links):
    layers = Layers(Path(table).read_text(encoding="utf-8"))
    files = project_files(source)
    faults = [
        *include_faults(source, files, layers),
        *circle_faults(includes(source, files)),
        *link_faults(Path(links).read_text(encoding="utf-8"), layers),
    ]
    if not files:
        faults.append("no source file found")
    print(*faults, sep="\n")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
