#!/usr/bin/env python3
"""check_texts.py SOURCE: fails when a Russian text in the program can reach the user untranslated.

Every literal with Cyrillic has to be in the table of translations or in texts_that_stay_russian.txt. An entry of the
table that no source uses has to be in texts_awaiting_their_code.txt. In the lists a line is one literal, and one
followed by an ellipsis stands for every text that begins so.
"""

import ast
import re
import subprocess
import sys
from pathlib import Path

TABLE = "base/localization/LocalizationTable.h"
# Of the texts that scenes alone say.
SCENE_TABLE = "ui/presentation/SceneTable.h"
LISTS = Path(__file__).parent
CYRILLIC = re.compile("[а-яёА-ЯЁ]")
# A comment, a raw literal, or literals that the compiler joins.
PIECE = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\((?P<raw>.*?)\)"|(?P<plain>"(?:[^"\\\n]|\\.)*"(?:_s)?(?:\s*(?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*"(?:_s)?)*)',
    re.DOTALL,
)


def literal(text):
    return "".join(ast.literal_eval(part) for part in re.findall(r'"(?:[^"\\\n]|\\.)*"', text))


def texts_of(path):
    source = path.read_text(encoding="utf-8")
    for match in PIECE.finditer(source):
        text = match["raw"] if match["raw"] is not None else match["plain"] and literal(match["plain"])
        if text and CYRILLIC.search(text):
            yield source.count("\n", 0, match.start()) + 1, text


class TextList:
    def __init__(self, name):
        self.entries = {}
        for line in (LISTS / name).read_text(encoding="utf-8").splitlines():
            if line.startswith('"'):
                self.entries[literal(line.removesuffix("…")), line.endswith("…")] = False

    def covers(self, text):
        for (entry, is_beginning) in self.entries:
            if text == entry or is_beginning and text.startswith(entry):
                self.entries[entry, is_beginning] = True
                return True
        return False

    def unused(self):
        return [entry for (entry, _), used in self.entries.items() if not used]


def main(source):
    listed = subprocess.run(["git", "-C", source, "ls-files", "-co", "--exclude-standard"],
                            check=True, capture_output=True, text=True).stdout.splitlines()
    files = [name for name in listed if name.endswith((".cpp", ".h", ".mm", ".qml"))
             and not name.startswith(("tests/", "tools/")) and name not in (TABLE, SCENE_TABLE) and Path(source, name).exists()]
    table, scene_table = ([text for _, text in texts_of(Path(source, name))] for name in (TABLE, SCENE_TABLE))
    russian, awaiting = TextList("texts_that_stay_russian.txt"), TextList("texts_awaiting_their_code.txt")
    used, faults = set(), []
    for name in files:
        for line, text in texts_of(Path(source, name)):
            used.add(text)
            known = text in table or name.endswith(".qml") and text in scene_table
            if not known and not russian.covers(text):
                faults.append(f"{name}:{line}: not translated: {text!r}")
    faults += [f"{name}: used nowhere: {text!r}" for name, texts in ((TABLE, table), (SCENE_TABLE, scene_table))
               for text in texts if text not in used and not awaiting.covers(text)]
    faults += [f"{SCENE_TABLE}: also in {TABLE}: {text!r}" for text in scene_table if text in table]
    faults += [f"texts_that_stay_russian.txt: used nowhere: {text!r}" for text in russian.unused()]
    faults += [f"texts_awaiting_their_code.txt: its code has come: {text!r}" for text in awaiting.unused()]
    if not used or not table:
        faults.append("no text found")
    print(*faults, sep="\n")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main(sys.argv[1])
