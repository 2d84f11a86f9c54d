#!/usr/bin/python3
"""Ratios of the plug-in's encoders to their peers, measured in one run.

    bench/plot_ratios.py TIMES.json INSTRUCTIONS.txt OUT.png

TIMES.json is the output of `mdtlm_bench --benchmark_format=json`, and
INSTRUCTIONS.txt that of bench/instructions.sh, both of the same build. Prints
the table of ratios (plug-in / peer; below 1 the plug-in is cheaper) and draws
it as grouped bars, time and instructions side by side, with the targets.
"""
import json
import sys

# Each record's plug-in benchmark; a peer's benchmark is its name with the
# peer's suffix before any "/argument". A pair is shown when both ran.
GPB_RECORDS = [
    ("flow IPv4", "BM_FlowGpb"), ("flow IPv6", "BM_FlowGpbIpv6"), ("flow-hop", "BM_FlowHopGpb"),
    ("export cache", "BM_ExportFlowCache_Gpb/0"), ("result", "BM_ResultStatistic_Gpb/0"),
    ("I/O flow IPv4", "BM_IoServiceFlow_Gpb/0"), ("I/O flow IPv6", "BM_IoServiceFlow_Gpb/1"),
    ("I/O throughput IPv4", "BM_IoServiceThroughput_Gpb/0"), ("I/O throughput IPv6", "BM_IoServiceThroughput_Gpb/1"),
]
GPB_PEERS = [("generated", "_Generated"), ("protozero", "_Protozero"), ("protobuf-c", "_ProtobufC"),
             ("nanopb", "_Nanopb")]
JSON_RECORDS = [
    ("flow IPv4", "BM_FlowJson"), ("flow IPv6", "BM_FlowJsonIpv6"), ("flow-hop", "BM_FlowHopJson"),
    ("export cache", "BM_ExportFlowCache_Json/0"), ("result", "BM_ResultStatistic_Json/0"),
    ("I/O flow IPv4", "BM_IoServiceFlow_Json/0"), ("I/O flow IPv6", "BM_IoServiceFlow_Json/1"),
    ("I/O throughput IPv4", "BM_IoServiceThroughput_Json/0"), ("I/O throughput IPv6", "BM_IoServiceThroughput_Json/1"),
]
JSON_PEERS = [("direct writer", "_Direct"), ("RapidJSON", "_RapidJson")]


def peer_name(ours, suffix):
    name, _, arg = ours.partition("/")
    return name + suffix + ("/" + arg if arg else "")


# (label, plug-in benchmark, peer benchmark, target ratio)
PAIRS = [(f"{label} GPB / {peer}", ours, peer_name(ours, suffix), 1.0)
         for label, ours in GPB_RECORDS for peer, suffix in GPB_PEERS] + \
        [(f"{label} JSON / {peer}", ours, peer_name(ours, suffix), 1.2)
         for label, ours in JSON_RECORDS for peer, suffix in JSON_PEERS]


def main():
    times_file, instr_file, png = sys.argv[1:4]
    with open(times_file) as f:
        runs = json.load(f)["benchmarks"]
    # With --benchmark_repetitions the medians count; otherwise each plain run.
    medians = {b["run_name"]: b["cpu_time"] for b in runs if b.get("aggregate_name") == "median"}
    times = medians or {b["name"]: b["cpu_time"] for b in runs if "cpu_time" in b}
    instr = {}
    with open(instr_file) as f:
        for line in f:
            parts = line.split()
            if len(parts) == 2 and parts[1].isdigit():
                instr[parts[0]] = int(parts[1])
    rows = []
    print(f"| pair | plug-in ns | peer ns | time ratio | plug-in instr | peer instr | instr ratio | target |")
    print("|---|---|---|---|---|---|---|---|")
    for label, ours, peer, target in PAIRS:
        if ours not in times or peer not in times:
            continue
        t = times[ours] / times[peer]
        i = instr[ours] / instr[peer] if ours in instr and peer in instr else None
        rows.append((label, t, i, target))
        print(f"| {label} | {times[ours]:.0f} | {times[peer]:.0f} | {t:.2f}x | {instr.get(ours, '-')} | "
              f"{instr.get(peer, '-')} | {'%.2fx' % i if i else '-'} | {target}x |")

    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    fig, ax = plt.subplots(figsize=(10, 0.45 * len(rows) + 1.5))
    ys = range(len(rows))
    ax.barh([y - 0.2 for y in ys], [r[1] for r in rows], height=0.4, label="time")
    ax.barh([y + 0.2 for y in ys], [r[2] or 0 for r in rows], height=0.4, label="instructions")
    for y, r in zip(ys, rows):
        ax.plot([r[3], r[3]], [y - 0.45, y + 0.45], color="red", linewidth=1.5)
    ax.set_yticks(list(ys))
    ax.set_yticklabels([r[0] for r in rows])
    ax.invert_yaxis()
    ax.set_xscale("log")
    ax.set_xticks([0.05, 0.1, 0.2, 0.5, 1, 1.2, 2])
    ax.set_xticklabels(["0.05", "0.1", "0.2", "0.5", "1", "1.2", "2"])
    ax.set_xlabel("plug-in / peer per record, log scale (red: target; below 1 the plug-in is cheaper)")
    ax.legend(loc="lower right")
    fig.tight_layout()
    fig.savefig(png, dpi=110)


if __name__ == "__main__":
    main()
