"""Dictation in a surrounding of real parts: a display, a microphone, a tray, an engine, and an editor with the focus."""

import json
from statistics import median

from benchmarks.report import ROOT, fixture_environment, peer, program, run

STARTS = 3
ROUNDS = 4
SPOKEN_ROUNDS = 20
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


def bench_speaking(report, _folder):
    text = ROOT / "tools/benchmarks/texts/english.txt"
    seen = json.loads(run([program("bench-speaking"), text, SPOKEN_ROUNDS], env=fixture_environment()))

    def against_curl(name):
        return [text / (curl + SETTLING) for text, curl in zip(seen[f"{name}Text"], seen[f"{name}Curl"])]

    def times(name):
        texts, curls = seen[f"{name}Text"], seen[f"{name}Curl"]
        return f"{median(texts):.0f} ms, curl {median(curls):.0f} ms, {len(texts)} times"

    report.add("11 s, stop when the engine rests: from the press to the text", median(seen["restedText"]), 160, " ms",
               detail=times("rested"))
    brief = against_curl("brief")
    report.add("11 s, stop 0.3 s after the last word, against curl with the whole: median", median(brief), 1.0,
               detail=times("brief"))
    report.add("the same, worst", max(brief), 1.5)
    ratio = median(seen["longText"]) / median(seen["halfText"])
    report.add("114 s, stop 0.5 s after the last word, against 11 s", ratio, 1.3,
               detail=f"{times('long')}; 11 s: {times('half')}")
    report.add("11 s without a pause, against curl with the whole", median(against_curl("breathless")), 1.05,
               detail=times("breathless"))
    processor = [ours / curl for ours, curl in zip(seen["minuteProcessor"], seen["minuteCurlProcessor"])]
    report.add("the engine's processor time for 60 s, against curl with the whole", median(processor), 1.6,
               detail=f"{median(seen['minuteProcessor']) / 1000:.1f} s")
    wrong = max(max(seen[name]) for name in seen if name.endswith("Errors"))
    report.add("words that are not what was said, at most", wrong * 100, 20, " %")


BENCHES = [bench_dictation, bench_speaking]
