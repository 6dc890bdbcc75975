"""Downloads from nginx on loopback, against aria2c. Needs 4 GB of disk."""

import json
import os
import socket
import statistics
import subprocess
import sys
import time
from contextlib import contextmanager

from benchmarks.report import ROUNDS, peer, program

MIB = 1024 * 1024

NGINX = """
{user} daemon off; pid {folder}/pid; error_log {folder}/error.log; worker_processes 2;
events {{}}
http {{
    access_log off; sendfile on; client_body_temp_path {folder};
    server {{
        listen 127.0.0.1:{port}; root {folder};
        location /limited/ {{ alias {folder}/; limit_rate 10m; }}
    }}
}}
"""


@contextmanager
def server(folder):
    """Yields the address that the folder's files are served at."""
    with socket.create_server(("127.0.0.1", 0)) as listener:
        port = listener.getsockname()[1]
        configuration = folder / "nginx.conf"
        user = "user root;" if os.geteuid() == 0 else ""  # another user may not enter a folder of root's
        configuration.write_text(NGINX.format(user=user, folder=folder, port=port))
        # nginx inherits the open socket, so that nobody else can take its port before it runs.
        nginx = subprocess.Popen([peer("nginx"), "-p", folder, "-c", configuration], pass_fds=[listener.fileno()],
                                 env={**os.environ, "NGINX": f"{listener.fileno()};"}, stderr=subprocess.DEVNULL)
    try:
        yield f"http://127.0.0.1:{port}"
    finally:
        nginx.terminate()
        nginx.wait()


def make_file(path, size):
    block = os.urandom(16 * MIB)
    with open(path, "wb") as file:
        for number in range(size // len(block)):
            file.write(number.to_bytes(8, "big") + block[8:])


def cost(command):
    """Wall and CPU time in seconds, and what was printed."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.PIPE)
    output = process.stdout.read()
    _, status, used = os.wait4(process.pid, 0)
    wall = time.monotonic() - begin
    if status != 0:
        sys.exit(f"{command[0]} failed: {output.decode()}")
    return wall, used.ru_utime + used.ru_stime, output


def ours(url, folder):
    target = folder / "ours"
    wall, cpu, output = cost([program("download_file"), url, target])
    target.unlink()
    return wall, cpu, json.loads(output)


def aria(url, folder, connections):
    wall, cpu, _ = cost([peer("aria2c"), "-q", "--no-conf", f"-x{connections}", f"-s{connections}",
                         "--file-allocation=none", "-d", folder, "-o", "aria", url])
    (folder / "aria").unlink()
    return wall, cpu


def bench_full_speed(report, folder):
    make_file(folder / "large", 1536 * MIB)
    with server(folder) as address:
        url = f"{address}/large"
        ours(url, folder), aria(url, folder, 6)  # the first of each finds memory cold
        pairs = [(ours(url, folder), aria(url, folder, 6)) for _ in range(ROUNDS)]
    median = statistics.median
    our_wall, aria_wall = median(o[0] for o, _ in pairs), median(a[0] for _, a in pairs)
    our_cpu, aria_cpu = median(o[1] for o, _ in pairs), median(a[1] for _, a in pairs)
    report.add("downloading 1.5 GiB in six segments, against aria2c", our_wall / aria_wall, 0.7,
               detail=f"{our_wall:.2f} s, aria2c {aria_wall:.2f} s")
    report.add("CPU time of it, against aria2c", our_cpu / aria_cpu, 1.0,
               detail=f"{our_cpu:.2f} s, aria2c {aria_cpu:.2f} s")
    report.add("peak memory growth of it", max(o[2]["peakGrowthKiB"] for o, _ in pairs) / 1024, 16, " MiB")
    report.add("the main thread's share of it", median(o[2]["mainThreadMs"] / 10 / o[0] for o, _ in pairs), 1, " %")


def bench_limited_connections(report, folder):
    make_file(folder / "middle", 544 * MIB)
    with server(folder) as address:
        url = f"{address}/limited/middle"
        our_wall, _, reported = ours(url, folder)
        one_wall, _ = aria(url, folder, 1)
    report.add_at_least("downloading at 10 MiB/s for each connection, times as fast as one", one_wall / our_wall, 5.5,
                        detail=f"{our_wall:.2f} s, one connection {one_wall:.2f} s")
    report.add("peak memory growth of it", reported["peakGrowthKiB"] / 1024, 16, " MiB")


BENCHES = [bench_full_speed, bench_limited_connections]
