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

# (label, plug-in benchmark, peer benchmark, target ratio)
PAIRS = [
    ("flow IPv4 GPB / generated", "BM_FlowGpb", "BM_FlowGpb_Generated", 1.0),
    ("flow IPv4 GPB / protozero", "BM_FlowGpb", "BM_FlowGpb_Protozero", 1.0),
    ("flow IPv6 GPB / generated", "BM_FlowGpbIpv6", "BM_FlowGpbIpv6_Generated", 1.0),
    ("flow IPv6 GPB / protozero", "BM_FlowGpbIpv6", "BM_FlowGpbIpv6_Protozero", 1.0),
    ("flow-hop GPB / generated", "BM_FlowHopGpb", "BM_FlowHopGpb_Generated", 1.0),
    ("flow-hop GPB / protozero", "BM_FlowHopGpb", "BM_FlowHopGpb_Protozero", 1.0),
    ("export cache GPB / generated", "BM_ExportFlowCache_Gpb/0", "BM_ExportFlowCache_Gpb_Generated/0", 1.0),
    ("result GPB / generated", "BM_ResultStatistic_Gpb/0", "BM_ResultStatistic_Gpb_Generated/0", 1.0),
    ("I/O flow IPv4 GPB / generated", "BM_IoServiceFlow_Gpb/0", "BM_IoServiceFlow_Gpb_Generated/0", 1.0),
    ("I/O flow IPv6 GPB / generated", "BM_IoServiceFlow_Gpb/1", "BM_IoServiceFlow_Gpb_Generated/1", 1.0),
    ("I/O throughput IPv4 GPB / generated", "BM_IoServiceThroughput_Gpb/0",
     "BM_IoServiceThroughput_Gpb_Generated/0", 1.0),
    ("I/O throughput IPv6 GPB / generated", "BM_IoServiceThroughput_Gpb/1",
     "BM_IoServiceThroughput_Gpb_Generated/1", 1.0),
    ("flow IPv4 JSON / direct writer", "BM_FlowJson", "BM_FlowJson_Direct", 1.2),
    ("flow IPv6 JSON / direct writer", "BM_FlowJsonIpv6", "BM_FlowJsonIpv6_Direct", 1.2),
    ("flow IPv4 JSON / RapidJSON", "BM_FlowJson", "BM_FlowJson_RapidJson", 1.2),
]


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
    ax.set_xlabel("plug-in / peer per record (red: target; below 1 the plug-in is cheaper)")
    ax.legend(loc="lower right")
    fig.tight_layout()
    fig.savefig(png, dpi=110)


if __name__ == "__main__":
    main()
