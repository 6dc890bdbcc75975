"""A history of years: 10,000 records of 20 KiB."""

import json
import os

from benchmarks.report import ROUNDS, best, milliseconds, program, run


def bench_history(report, folder):
    data = folder / "data"
    (data / "Orvane").mkdir(parents=True)
    measure = [program("bench-history"), data, 10000]
    first = json.loads(run(measure))  # makes the records
    records = data / "Orvane" / "History"
    theirs = best(lambda: milliseconds(["sh", "-c", f"find '{records}' -name '*.json' -print0 | xargs -0 cat >'{os.devnull}'"]))
    report.add("list of 10,000 records without an index, against cat", first["list_ms"] / theirs, 12,
               detail=f"{first['list_ms']} ms, cat {theirs:.0f} ms; ready for a fast search after {first['prepare_ms']} ms")
    report.add("a letter typed before searching is fast", first["unprepared_letter_ms"], 1000, " ms")
    runs = [json.loads(run(measure)) for _ in range(ROUNDS)]

    def least(figure):
        return min(times[figure] for times in runs)

    report.add("list of 10,000 records", least("list_ms"), 200, " ms")
    report.add("a letter typed in a search of 10,000 records", least("letter_ms"), 60, " ms")
    report.add("saving a record beside 10,000 others", least("save_ms"), 40, " ms")
    report.add("memory of a tray beside 10,000 records", least("watch_mib"), 5, " MiB")
    report.add("memory of their list", least("list_mib"), 10, " MiB")


BENCHES = [bench_history]
