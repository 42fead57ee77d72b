#!/usr/bin/env python3
"""Runs every benchmark of bench/ and writes bench/REPORT.md: one table of every measured ratio against its aim.

Usage: report.py --native-bin DIR [--windows-bin DIR --wine-runner SCRIPT] [--out FILE] [--repetitions N]

Native benchmarks run with Google Benchmark's JSON output (medians of N repetitions); the Windows-lane benchmarks
print their own figures under Wine and are read from their text. A benchmark missing from the build, or one that
fails, gives a row saying so instead of a figure (and a non-zero exit), never a silent gap.
"""
import argparse
import datetime
import json
import os
import platform
import re
import subprocess
import sys
import tempfile

# Each row: (aim id, what is measured, how the figure is computed, the aim as text, the aim as a test).
# Figure kinds:
#   ("speed", bin, lumex, baseline)  baseline time / Lumex time (above 1: Lumex is faster)
#   ("cost", bin, lumex, baseline)   Lumex time / baseline time (below 1: Lumex is cheaper)
#   ("rate", bin, name, counter, unit, scale)  a counter of one benchmark (items or bytes per second), scaled
#   ("rates", bin, a, b, counter)    counter of a / counter of b
#   ("windows", bin, regex)          the first group of the regex in the Windows benchmark's output
ROWS = [
    ("P1", "DrawIndexed through the render manager, CPU time against raw command-list calls",
     ("windows", "LxD3D12RenderManagerBench.exe", r"ratio rm/raw \(topology \+ draw\)\s+median\s+([0-9.]+)"),
     "at most 1.1", lambda v: v <= 1.1),
    ("P1", "effect Begin/BeginPass/draw/EndPass/End with parameters set, against raw D3D12 calls binding the same",
     ("windows", "LxD3D12EffectBench.exe", r"ratio effect/raw\s+median\s+([0-9.]+)"), "at most 1.3",
     lambda v: v <= 1.3),
    ("P2", "ReloadEffects of 7 effects, cold shader cache against warm, on D3D12 under Wine (compiles are cheap there)",
     ("windows", "LxD3D12EffectBench.exe", r"ratio cold/warm\s+median\s+([0-9.]+)"), "at least 20",
     lambda v: v >= 20),
    ("P2", "ReloadEffects with a warm shader cache against a cold one",
     ("speed", "LxEffectReloadBench", "BM_ReloadWarmCache", "BM_ReloadColdCache"), "at least 20", lambda v: v >= 20),
    ("P7", "keyframe playback, float curve of 100,000 keys against 100 keys (time per evaluation)",
     ("cost", "LxAnimationBench", "BM_PlaybackFloat/100000", "BM_PlaybackFloat/100"), "at most 1.2",
     lambda v: v <= 1.2),
    ("P7", "keyframe playback, vec3 curve of 100,000 keys against 100 keys",
     ("cost", "LxAnimationBench", "BM_PlaybackVec3/100000", "BM_PlaybackVec3/100"), "at most 1.2",
     lambda v: v <= 1.2),
    ("P7", "keyframe evaluations per second (float, 100,000 keys), millions",
     ("rate", "LxAnimationBench", "BM_PlaybackFloat/100000", "items_per_second", "M/s", 1e-6), "at least 50",
     lambda v: v >= 50),
    ("P8", "model archive from a zip through LxModelData against raw minizip extraction",
     ("speed", "LxModelDataBench", "BM_LoadThroughModelData", "BM_Baseline_RawMinizip"), "at least 0.8",
     lambda v: v >= 0.8),
    ("P9", "frame loop (BeginScene, clear, EndScene with Present) against a raw D3D12/DXGI loop, frame rate",
     ("windows", "LxD3D12RenderManagerBench.exe", r"ratio rm/raw\s+median\s+([0-9.]+)"), "at least 0.95",
     lambda v: v >= 0.95),
    ("scene", "drawing 10,000 small objects through the object manager against a raw loop binding the same values",
     ("cost", "LxSceneBench", "DrawObjects", "DrawRawLoop"), "at most 1.5", lambda v: v <= 1.5),
    ("scene", "objects drawn per millisecond through the object manager",
     ("rate", "LxSceneBench", "DrawObjects", "items_per_second", "/ms", 1e-3), "(reported)", None),
    ("scene", "skinning palettes, 100 models of 64 bones: millions of bones per second",
     ("rate", "LxSceneBench", "SkinningPalettes", "items_per_second", "M/s", 1e-6), "(reported)", None),
    ("scene", "particle simulation, 100,000 particles: millions of particles per second",
     ("rate", "LxSceneBench", "ParticleStep", "items_per_second", "M/s", 1e-6), "(reported)", None),
    ("core", "LxHashMap string-key find against std::unordered_map, 1,000 identifiers",
     ("speed", "LxCoreBench", "BM_LxHashMapFind/1000/0", "BM_StdUnorderedMapFind/1000/0"), "at least 1.5",
     lambda v: v >= 1.5),
    ("core", "the same, 100,000 identifiers",
     ("speed", "LxCoreBench", "BM_LxHashMapFind/100000/0", "BM_StdUnorderedMapFind/100000/0"), "at least 1.5",
     lambda v: v >= 1.5),
    ("core", "the same, 1,000 numbered names",
     ("speed", "LxCoreBench", "BM_LxHashMapFind/1000/1", "BM_StdUnorderedMapFind/1000/1"), "at least 1.5",
     lambda v: v >= 1.5),
    ("core", "the same, 100,000 numbered names",
     ("speed", "LxCoreBench", "BM_LxHashMapFind/100000/1", "BM_StdUnorderedMapFind/100000/1"), "at least 1.5",
     lambda v: v >= 1.5),
    ("core", "LxMD5Hash against OpenSSL MD5, 8 KB blocks",
     ("speed", "LxCoreBench", "BM_LxMD5Hash8K", "BM_OpenSSLMD5_8K"), "at least 0.9", lambda v: v >= 0.9),
    ("effects", "effect parsing throughput, MB/s",
     ("rate", "LxEffectParseBench", "BM_ParseEffect/min_time:2.000", "bytes_per_second", "MB/s", 1e-6),
     "at least 20", lambda v: v >= 20),
    ("upload", "upload ring allocations on one thread, millions per second",
     ("rate", "LxUploadHeapBench", "BM_UploadRing_LockFree/real_time/threads:1", "items_per_second", "M/s", 1e-6),
     "at least 50", lambda v: v >= 50),
    ("upload", "upload ring under 2-thread contention against a mutex ring, allocations",
     ("rates", "LxUploadHeapBench", "BM_UploadRing_LockFree/real_time/threads:2",
      "BM_UploadRing_Mutex/real_time/threads:2", "items_per_second"), "at least 3", lambda v: v >= 3),
    ("script", "ExecuteCode against raw luaL_loadbuffer + lua_pcall, time per message",
     ("cost", "LxScriptBench", "BM_ExecuteCode/min_time:2.000", "BM_Baseline_LoadBufferPcall/min_time:2.000"),
     "at most 1.2", lambda v: v <= 1.2),
    ("script", "message queue, 2 producers and the main thread, millions of messages per second",
     ("rate", "LxScriptBench", "BM_QueueTwoProducers/min_time:2.000/real_time", "items_per_second", "M/s", 1e-6),
     "(reported)", None),
]


def run(cmd, cwd=None):
    print("[bench] " + " ".join(cmd), flush=True)
    # Benchmarks may leave a log file in their working folder: never the checkout.
    with tempfile.TemporaryDirectory() as scratch:
        return subprocess.run(cmd, cwd=cwd or scratch, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def native_results(bin_dir, name, repetitions, cache):
    if name in cache:
        return cache[name]
    path = os.path.abspath(os.path.join(bin_dir, name))
    results = None
    if os.path.exists(path):
        # The results go to a file of their own: what the library logs on the console stays out of the JSON.
        with tempfile.TemporaryDirectory() as out_dir:
            out = os.path.join(out_dir, "results.json")
            done = run([path, "--benchmark_out=" + out, "--benchmark_out_format=json",
                        "--benchmark_repetitions=%d" % repetitions, "--benchmark_report_aggregates_only=true",
                        "--benchmark_enable_random_interleaving=true"])
            if done.returncode == 0 and os.path.exists(out):
                results = {}
                with open(out) as f:
                    for b in json.load(f)["benchmarks"]:
                        # One repetition has no aggregates: its single run stands for the median.
                        if b.get("aggregate_name") == "median" or (repetitions == 1 and
                                                                   b.get("run_type") == "iteration"):
                            results[b.get("run_name", b["name"])] = b
            else:
                print(done.stdout[-3000:])
    cache[name] = results
    return results


def windows_output(bin_dir, runner, name, cache):
    if name in cache:
        return cache[name]
    out = None
    path = os.path.join(bin_dir or "", name)
    if bin_dir and runner and os.path.exists(path):
        done = run(["bash", runner, "exec", "./" + name], cwd=bin_dir)
        print(done.stdout[-2000:])
        out = done.stdout if done.returncode == 0 else None
    cache[name] = out
    return out


def figure(kind, args, cache):
    """The row's value, or (None, why)."""
    if kind == "windows":
        exe, regex = args
        out = windows_output(args_windows_bin, args_runner, exe, cache)
        if out is None:
            return None, "not run (%s missing or failed)" % exe
        m = re.search(regex, out)
        return (float(m.group(1)), None) if m else (None, "no figure in the output of " + exe)
    binary = args[0]
    results = native_results(args_native_bin, binary, args_repetitions, cache)
    if results is None:
        return None, "not run (%s missing or failed)" % binary

    def get(name, field):
        if name not in results:
            raise KeyError(name)
        return float(results[name][field])

    try:
        # CPU time: the single-threaded comparisons should not time what else the machine runs.
        if kind == "speed":
            return get(args[2], "cpu_time") / get(args[1], "cpu_time"), None
        if kind == "cost":
            return get(args[1], "cpu_time") / get(args[2], "cpu_time"), None
        if kind == "rate":
            return get(args[1], args[2]) * args[4], None
        if kind == "rates":
            return get(args[1], args[3]) / get(args[2], args[3]), None
    except KeyError as e:
        return None, "no result for " + str(e)
    return None, "unknown figure kind " + kind


def main():
    global args_native_bin, args_windows_bin, args_runner, args_repetitions
    p = argparse.ArgumentParser()
    p.add_argument("--native-bin", required=True)
    p.add_argument("--windows-bin")
    p.add_argument("--wine-runner")
    p.add_argument("--out", default=os.path.join(os.path.dirname(os.path.abspath(__file__)), "REPORT.md"))
    p.add_argument("--repetitions", type=int, default=3)
    p.add_argument("--command", default="bash scripts/run-benchmarks.sh")
    a = p.parse_args()
    args_native_bin, args_windows_bin, args_runner, args_repetitions = (a.native_bin, a.windows_bin, a.wine_runner,
                                                                        a.repetitions)
    cache = {}
    lines = []
    missing = 0
    for aim_id, what, fig, aim_text, test in ROWS:
        kind = fig[0]
        value, why = figure(kind, fig[1:], cache)
        if value is None:
            missing += 1
            lines.append("| %s | %s | %s | %s | - |" % (aim_id, what, why, aim_text))
            continue
        met = "-" if test is None else ("met" if test(value) else "**not met**")
        lines.append("| %s | %s | %.3g | %s | %s |" % (aim_id, what, value, aim_text, met))

    cpu = "unknown processor"
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    cpu = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    with open(a.out, "w") as f:
        f.write("# Benchmark report\n\n")
        f.write("Produced by `%s` on %s UTC.\n\n" % (a.command,
                                                      datetime.datetime.utcnow().strftime("%Y-%m-%d %H:%M")))
        f.write("Machine: %s, %d cores, %s %s. Native figures are medians of %d interleaved repetitions "
                "(Google Benchmark; ratios of CPU time); Windows-lane figures run under Wine 10 with lavapipe and print their own "
                "medians. Ratios compare Lumex with a baseline measured in the same run; bench/README.md says what "
                "each baseline is and why the figures are what they are.\n\n"
                % (cpu, os.cpu_count() or 0, platform.system(), platform.release(), a.repetitions))
        f.write("| aim | measured | figure | aim | |\n|---|---|---|---|---|\n")
        f.write("\n".join(lines) + "\n")
    print("[bench] wrote %s (%d rows, %d without a figure)" % (a.out, len(lines), missing))
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
