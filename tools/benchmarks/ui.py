"""The windows, drawn by the processor, beside a history of 10,000 records of 20 KiB."""

import json

from benchmarks.report import program, run

ROUNDS = 3


def bench_ui(report, folder):
    data = folder / "data"
    (data / "Orvane").mkdir(parents=True)
    run([program("bench-history"), data, 10000])  # makes the records
    display = ["xvfb-run", "-a", "-s", "-screen 0 1280x800x24"]
    runs = [json.loads(run([*display, program("bench-ui"), data])) for _ in range(ROUNDS)]

    def least(figure):
        return min(times[figure] for times in runs)

    report.add("main window from the click to painted, the first time", least("first_ms"), 350, " ms")
    report.add("the same later", least("later_ms"), 100, " ms")
    report.add("a letter typed in the search of the history", least("letter_ms"), 60, " ms")
    report.add("a transcript of 20,000 segments opens", least("record_ms"), 150, " ms")
    report.add("the slowest frame of scrolling in it", least("frame_ms"), 33, " ms")
    report.add("private memory after the windows were closed a second time, beyond the first", least("growth_mib"), 4, " MiB")


BENCHES = [bench_ui]
