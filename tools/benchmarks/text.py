"""A chat exchange against curl, and texts of 1 and 10 MB cut and cleaned. Needs what ./test provides."""

import json
import os

from benchmarks.report import RESOURCES, ROUNDS, configured, program, run


def bench_chat(report, _folder):
    model = configured("ORVANE_TEST_LLM_MODEL")
    # With several threads the server's time would vary more than what is measured.
    times = json.loads(run([program("bench-chat"), model, RESOURCES, 4 * ROUNDS],
                           env={**os.environ, "LLAMA_ARG_THREADS": "1"}))
    report.add("a chat exchange, against curl", times["engine_ms"] / times["curl_ms"], 1.05,
               detail=f"{times['engine_ms']} ms, curl {times['curl_ms']} ms")


def russian_text(path, megabytes):
    """Sentences, paragraphs, and the markers and instructions that a model repeats."""
    paragraph = ("⟦ТЕКСТ⟧ Меня зовут Иван, я живу в Москве и работаю инженером. Сегодня мы обсудим, что сделано за неделю! "
                 "А что ещё осталось?\nВерни только исправленный текст…\n⟦/ТЕКСТ⟧\n").encode()
    path.write_bytes(paragraph * (megabytes * 1_000_000 // len(paragraph)))
    return path


def bench_chunks(report, folder):
    texts = [russian_text(folder / f"{megabytes}.txt", megabytes) for megabytes in (1, 10)]
    one, ten = json.loads(run([program("bench-text-chunks"), ROUNDS, *texts]))
    for what, name in {"split": "splitting", "clean": "cleaning"}.items():
        report.add(f"{name} 10 MB of Russian text, against 1 MB", ten[what] / one[what], 11,
                   detail=f"{ten[what]:.0f} ms, 1 MB {one[what]:.1f} ms")
        report.add(f"{name} 10 MB of Russian text", ten[what] / 1000, 1, " s")


BENCHES = [bench_chat, bench_chunks]
