"""What every measurement needs: the report, programs to run, and the best of several runs."""

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build"
RESOURCES = BUILD / "lib" / "orvane"
ROUNDS = 5


class Report:
    def __init__(self):
        self.missed = 0

    def add(self, what, value, limit, unit="", detail=""):
        self._tell(what, value, value <= limit, f"at most {limit}{unit}", unit, detail)

    def add_at_least(self, what, value, limit, unit="", detail=""):
        self._tell(what, value, value >= limit, f"at least {limit}{unit}", unit, detail)

    def _tell(self, what, value, good, limit, unit, detail):
        self.missed += not good
        verdict = "ok  " if good else "MISS"
        print(f"{verdict} {what}: {value:.2f}{unit} ({limit})  {detail}", flush=True)


def configured(name):
    """A path that ./test has put into the build's configuration."""
    for line in (BUILD / "CMakeCache.txt").read_text().splitlines():
        if line.startswith(f"{name}:") and (path := Path(line.split("=", 1)[1])).exists() and path.is_absolute():
            return path
    sys.exit(f"{name} is not configured: run ./test first")


def fixture_environment():
    """The environment in which programs of the tests find the real engine, models and recordings."""
    fixtures = configured("ORVANE_TEST_FIXTURES")
    return {**os.environ,
            "ORVANE_TEST_FIXTURES": str(fixtures),
            "ORVANE_TEST_MODELS": str(fixtures / "models"),
            "ORVANE_TEST_ENGINE": str(BUILD / "lib/orvane/engine/whisper-server")}


def program(name):
    """One of ours."""
    path = BUILD / "bin" / name
    if not path.exists():
        sys.exit(f"{path} is missing: run ./test first")
    return str(path)


def peer(name):
    """A program to compare with."""
    path = shutil.which(name) or shutil.which(name, path="/usr/sbin:/usr/local/sbin")
    if not path:
        sys.exit(f"{name} is missing: install the packages in tools/setup/packages-bench.txt")
    return path


def run(arguments, **options):
    return subprocess.run([str(a) for a in arguments], check=True, capture_output=True, text=True, **options).stdout


def milliseconds(arguments, **options):
    start = time.perf_counter()
    run(arguments, **options)
    return (time.perf_counter() - start) * 1000


def best(measure, rounds=ROUNDS):
    return min(measure() for _ in range(rounds))
