"""Transcribing, decoding and starting, against curl, ffmpeg and cat. Needs what ./test provides."""

import json
import os

from benchmarks.report import RESOURCES, ROUNDS, best, configured, milliseconds, peer, program, run


def bench_transcription(report, _folder):
    recordings = configured("ORVANE_TEST_FIXTURES")
    times = json.loads(run([program("bench-transcription"), recordings / "jfk.wav",
                            recordings / "models" / "ggml-base.bin", RESOURCES, ROUNDS]))
    report.add("transcribing 11 s of speech, against curl", times["service_ms"] / times["curl_ms"], 1.05,
               detail=f"{times['service_ms']} ms, curl {times['curl_ms']} ms")


def bench_decoding(report, folder):
    recordings = configured("ORVANE_TEST_FIXTURES")
    kinds = {"AAC 44.1 kHz": ["hour.m4a", "-ar", "44100", "-ac", "2", "-c:a", "aac", "-b:a", "128k"],
             "Opus 48 kHz": ["hour.opus", "-ar", "48000", "-ac", "2", "-c:a", "libopus", "-b:a", "96k"]}
    for kind, (name, *encoding) in kinds.items():
        media = folder / name
        run([peer("ffmpeg"), "-v", "error", "-stream_loop", "-1", "-i", recordings / "jfk.wav", "-t", "3600", *encoding, media])
        peer_command = [peer("ffmpeg"), "-v", "error", "-y", "-i", media, "-ac", "1", "-ar", "16000", "-f", "f32le",
                        folder / "peer.f32"]
        theirs = best(lambda: milliseconds(peer_command))
        runs = [json.loads(run([program("bench-decode"), media, RESOURCES])) for _ in range(ROUNDS)]
        ours = min(r["milliseconds"] for r in runs)
        report.add(f"decoding 1 h of {kind}, against ffmpeg", ours / theirs, 1.0, detail=f"{ours} ms, ffmpeg {theirs:.0f} ms")
        beyond = min(r["peakKiB"] / 1024 - r["samples"] * 4 / 2**20 for r in runs)
        report.add(f"private memory of decoding 1 h of {kind}, beyond its samples", beyond, 16, " MiB")


def bench_request_body(report, folder):
    runs = [json.loads(run([program("bench-request-body"), folder])) for _ in range(3)]
    pause = min(times["longest_pause_ms"] for times in runs)
    report.add("longest pause of the main thread while sending 460 MB", pause, 16, " ms")
    growth = max(times["growth_kib"] for times in runs)
    report.add("memory growth while sending 460 MB", growth / 1024, 8, " MiB")


def bench_start(report, _folder):
    ours = best(lambda: milliseconds([program("orvane"), "--version"]), 50)
    theirs = best(lambda: milliseconds([program("bench-nothing")]), 50)
    report.add("orvane --version", ours, 21, " ms")
    report.add("orvane --version, against a Qt program that does nothing", ours / theirs, 2.5,
               detail=f"{ours:.1f} ms, the program {theirs:.1f} ms")


BENCHES = [bench_transcription, bench_decoding, bench_request_body, bench_start]
