"""A chat exchange against curl, and texts of 1 and 10 MB cut and cleaned. Needs what ./test provides."""

import json

from benchmarks.report import RESOURCES, ROUNDS, configured, program, run


def bench_chat(report, _folder):
    model = configured("ORVANE_TEST_LLM_MODEL")
    times = json.loads(run([program("bench-chat"), model, RESOURCES, 4 * ROUNDS]))
    report.add("a chat exchange, against curl", times["engine_ms"] / times["curl_ms"], 1.05,
               detail=f"{times['engine_ms']} ms, curl {times['curl_ms']} ms")


def bench_chunks(report, _folder):
    times = json.loads(run([program("bench-text-chunks"), ROUNDS, 1, 10]))
    for what, name in {"split": "splitting", "clean": "cleaning"}.items():
        one, ten = times["1"][what], times["10"][what]
        report.add(f"{name} 10 MB of Russian text, against 1 MB", ten / one, 11, detail=f"{ten:.0f} ms, 1 MB {one:.1f} ms")
        report.add(f"{name} 10 MB of Russian text", ten / 1000, 1, " s")


BENCHES = [bench_chat, bench_chunks]
