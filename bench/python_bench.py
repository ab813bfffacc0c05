#!/usr/bin/env python3
"""The Python module's speed against the C++ render, measured in one run.

  1. Overhead: doc.render(0, dpi=150) against the bare C call it makes
     (tarvik_render_image through ctypes), alternated call by call in this
     process so that both see the same machine load; and that C call against
     the document library's RenderPage (tarvik_capi_bench, same run, its
     repetitions interleaved). Their product is the overhead over the C++
     render. Wall time and CPU time (the latter is steadier on a busy machine).
  2. Threads: pages per second with two Python threads against one, the share
     of time both threads were inside the library at once (near 100 % when
     the GIL is released; near 0 when not), the share of their time the
     threads were blocked rather than running or queued for a core (near 0
     when nothing serialises them, so that they scale with free cores), and
     the C++ threads' ratio on the same machine.

  PYTHONPATH=build/python python3 bench/python_bench.py [build-dir] [file.ofd]
"""

import ctypes
import json
import os
import statistics
import subprocess
import sys
import threading
import time

import tarvik

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "..", "build")
INVOICE = os.path.join(HERE, "..", "..", "shared", "fixtures", "ofd", "ofdrw__fapiao_shili.ofd")
FILE = sys.argv[2] if len(sys.argv) > 2 else (
    INVOICE if os.path.exists(INVOICE) else os.path.join(HERE, "..", "testdata", "signed_v4_png.ofd"))
CPP_BENCH = os.path.join(BUILD, "bench", "tarvik_capi_bench")
DPI = 150
CALLS = 60
med = statistics.median


def cpp(filter_, repetitions=6):
    """{benchmark name: (median real ms, median cpu ms)} of the C++ benchmark."""
    out = subprocess.run([CPP_BENCH, f"--benchmark_filter={filter_}", "--benchmark_min_time=0.3",
                          f"--benchmark_repetitions={repetitions}", "--benchmark_enable_random_interleaving=true",
                          "--benchmark_format=json"], check=True, capture_output=True, text=True,
                         env=dict(os.environ, TARVIK_BENCH_OFD=FILE)).stdout
    runs = {}
    for b in json.loads(out)["benchmarks"]:
        if b.get("run_type") == "iteration":
            runs.setdefault(b["run_name"], []).append((b["real_time"], b["cpu_time"]))
    return {name: (med(r for r, _ in times), med(c for _, c in times)) for name, times in runs.items()}


def overhead(doc):
    """(real, cpu) median ms of the bare C call and of doc.render, alternated."""
    lib = tarvik._lib
    options = tarvik._render_options(DPI, True, False, True, "as decoded", 0xFFFFFFFF)
    image = ctypes.c_void_p()
    bare, module = [], []
    for _ in range(CALLS):
        start, cpu = time.perf_counter(), time.thread_time()
        lib.tarvik_render_image(doc._handle, 0, ctypes.byref(options), ctypes.byref(image), None)
        lib.tarvik_image_free(image)
        bare.append((time.perf_counter() - start, time.thread_time() - cpu))
        start, cpu = time.perf_counter(), time.thread_time()
        img = doc.render(0, dpi=DPI)
        del img
        module.append((time.perf_counter() - start, time.thread_time() - cpu))
    return tuple(tuple(med(x[i] for x in runs) * 1e3 for i in (0, 1)) for runs in (bare, module))


def schedstat():
    """(ns on a core, ns runnable but waiting for one) of the calling thread;
    None where /proc does not tell."""
    try:
        with open(f"/proc/self/task/{threading.get_native_id()}/schedstat") as f:
            running, waiting, _ = f.read().split()
        return int(running), int(waiting)
    except OSError:
        return None


def throughput(doc, threads, renders_each=10):
    """Pages per second with `threads` threads at once; the share of the time
    when all of them were inside a render; and the share of the threads' time
    spent blocked (neither on a core nor waiting for one: locks, the GIL)."""
    barrier = threading.Barrier(threads + 1)
    spans = [[] for _ in range(threads)]
    blocked = []

    def work(mine):
        barrier.wait()
        begin, stat = time.perf_counter(), schedstat()
        for _ in range(renders_each):
            start = time.perf_counter()
            doc.render(0, dpi=DPI)
            mine.append((start, time.perf_counter()))
        end = schedstat()
        if stat and end:
            wall = (time.perf_counter() - begin) * 1e9
            blocked.append(max(0.0, 1 - (end[0] - stat[0] + end[1] - stat[1]) / wall))

    pool = [threading.Thread(target=work, args=(spans[i],)) for i in range(threads)]
    for t in pool:
        t.start()
    barrier.wait()
    start = time.perf_counter()
    for t in pool:
        t.join()
    elapsed = time.perf_counter() - start
    together = 0.0
    if threads == 2:
        for a0, a1 in spans[0]:
            for b0, b1 in spans[1]:
                together += max(0.0, min(a1, b1) - max(a0, b0))
    return threads * renders_each / elapsed, together / elapsed, (med(blocked) if blocked else float("nan"))


def main():
    doc = tarvik.open(FILE)
    w, h = doc.pixel_size(0, DPI)
    print(f"{os.path.basename(FILE)}: page 1 at {DPI} dpi, {w} x {h} pixels, {os.cpu_count()} cores, "
          f"load {os.getloadavg()[0]:.1f}")
    doc.render(0, dpi=DPI)  # warm caches (fonts, seal pictures)

    (bare, bare_cpu), (module, module_cpu) = overhead(doc)
    times = cpp("BM_RenderPage(Cpp|CApiImage)/")
    (c_cpp, c_cpp_cpu), (c_capi, c_capi_cpu) = times["BM_RenderPageCpp/real_time"], \
        times["BM_RenderPageCApiImage/real_time"]

    def pct(a, b):
        return f"{100 * (a / b - 1):+.1f} %"

    print(f"C++ RenderPage {c_cpp:.2f} ms ({c_cpp_cpu:.2f} cpu), tarvik_render_image {c_capi:.2f} ms "
          f"({c_capi_cpu:.2f} cpu): C interface {pct(c_capi, c_cpp)} ({pct(c_capi_cpu, c_cpp_cpu)} cpu)")
    print(f"tarvik_render_image via ctypes {bare:.2f} ms ({bare_cpu:.2f} cpu), doc.render {module:.2f} ms "
          f"({module_cpu:.2f} cpu): module {pct(module, bare)} ({pct(module_cpu, bare_cpu)} cpu)")
    print(f"Python over C++: {pct(module / bare * c_capi, c_cpp)} wall, "
          f"{pct(module_cpu / bare_cpu * c_capi_cpu, c_cpp_cpu)} cpu")

    one = med([throughput(doc, 1)[0] for _ in range(3)])
    runs = [throughput(doc, 2) for _ in range(3)]
    two, together, blocked = (med(r[i] for r in runs) for i in range(3))
    print(f"Python threads: 1 -> {one:.1f} pages/s, 2 -> {two:.1f} pages/s: {two / one:.2f}x; "
          f"both inside the library {100 * together:.0f} % of the time; "
          f"threads blocked {100 * blocked:.0f} % of their time (the rest on a core or waiting for one)")
    t = cpp("BM_RenderPageCppThreads/", repetitions=3)
    c1, c2 = t["BM_RenderPageCppThreads/real_time/threads:1"][0], t["BM_RenderPageCppThreads/real_time/threads:2"][0]
    print(f"C++ threads, same machine: {2 * c1 / c2:.2f}x")
    doc.close()


if __name__ == "__main__":
    main()
