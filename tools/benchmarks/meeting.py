"""Recording a meeting of hours, and telling speakers apart. Needs what ./test provides."""

import json

from benchmarks.report import configured, program, run

HOURS = 4


def bench_recording(report, folder):
    measured = json.loads(run([program("bench-meeting"), folder, HOURS]))
    report.add(f"memory growth while recording {HOURS} h", measured["growth_kib"] / 1024, 8, " MiB")
    percent = measured["processor_seconds"] / (HOURS * 3600) * 100
    report.add(f"processor time of recording {HOURS} h, of real time", percent, 1, " %",
               detail=f"{measured['processor_seconds']} s")
    report.add("samples of it that are lost, repeated or changed", 0 if measured["equal"] else 1, 0)


def bench_labelling(report, _folder):
    times = json.loads(run([program("bench-labelling"), configured("ORVANE_TEST_FIXTURES") / "jfk.wav", 3]))
    report.add("labelling 1 h in 900 segments, against the plain form", times["ours_ms"] / times["plain_ms"], 0.3,
               detail=f"{times['ours_ms']} ms, plain {times['plain_ms']} ms")
    report.add("labelling 1 h in 900 segments", times["ours_ms"] / 1000, 1, " s")


BENCHES = [bench_recording, bench_labelling]
