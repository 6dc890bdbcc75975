"""Dictation in a surrounding of real parts: a display, a microphone, a tray, an engine, and an editor with the focus."""

import json
from statistics import median

from benchmarks.report import fixture_environment, peer, program, run

STARTS = 3
ROUNDS = 4
SETTLING = 80  # ms that the program waits, by design, between the indicator's going and the paste


def bench_dictation(report, _folder):
    peer("trayer")  # or says what to install
    seen = json.loads(run([program("bench-dictation"), STARTS, ROUNDS], env=fixture_environment()))

    def add_times(what, name, limit):
        report.add(what, median(seen[name]), limit, " ms", detail=f"{min(seen[name]):.0f} to {max(seen[name]):.0f} ms")

    texts, curls = ([*seen[f"first{name}"], *seen[f"later{name}"]] for name in ("Text", "Curl"))
    more = [text - curl - SETTLING for text, curl in zip(texts, curls)]
    report.add(f"from the second stop press to the text, over curl and {SETTLING} ms", median(more), 80, " ms",
               detail=f"{median(texts):.0f} ms, curl {median(curls):.0f} ms, {len(texts)} times")
    first, later = median(seen["firstText"]), median(seen["laterText"])
    report.add("the first time after a start, against later ones", first / later, 1.1,
               detail=f"{first:.0f} ms, later {later:.0f} ms")
    for which, indicator_limit in ("first", 150), ("later", 50):
        add_times(f"{which}, from the second start press to the recording", f"{which}Recording", 100)
        add_times(f"{which}, what the recording lacks of the time between the presses", f"{which}Unrecorded", 100)
        add_times(f"{which}, from the second start press to the indicator", f"{which}Indicator", indicator_limit)
    add_times("from the start of the program to its icon in the tray", "tray", 200)
    for what, name, limit, unit in (("memory in the tray", "residentMiB", 45, " MiB"),
                                    ("private memory in the tray", "privateMiB", 15, " MiB"),
                                    ("wake-ups in the tray", "wakeUpsPerSecond", 1, " /s"),
                                    ("processor while recording, of a core", "recordingPercent", 8, " %")):
        report.add(what, seen[name][0], limit, unit)


BENCHES = [bench_dictation]
