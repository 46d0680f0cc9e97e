#!/usr/bin/env python3
"""What ./bench measured, as docs/performance.md and plots in docs/performance.

usage: scripts/performance.py COMPILER COMMIT

Takes build/bench/results, and beside it results-plain to results-avx2 where there are any. Needs gnuplot.
"""

import glob
import math
import os
import subprocess
import sys

import bench_table
from bench_table import ROOT

BUILD = os.path.join(ROOT, "build", "bench")
RESULTS = os.path.join(BUILD, "results")
PLOTS = os.path.join(ROOT, "docs", "performance")
LEVELS = ("plain", "sse2", "ssse3", "avx2")
GROWTH = "growth"

# Readable on a light and on a dark page.
STYLE = """set terminal svg size 860,{height} dynamic font 'sans-serif,13' background '#ffffff'
set output '{path}'
set border 3 lc rgb '#666666'
set grid lc rgb '#dddddd'
set tics nomirror
"""


def subjects():
    """Those with results, in the order of their goal files' names; growth has no goals."""
    names = sorted(os.path.basename(path)[:-6] for path in glob.glob(os.path.join(ROOT, "benchmarks", "*.goals")))
    return [name for name in names if bench_table.rounds(RESULTS, name)]


def gnuplot(path, height, script):
    head = STYLE.format(height=height, path=path)
    subprocess.run(["gnuplot"], input=head + script, text=True, check=True)


def quoted(text):
    """As gnuplot takes a text in a block of data: in double quotes, with no markup."""
    return '"' + text.replace('"', "'").replace("_", "\\\\_").replace("^", "\\\\^") + '"'


def plot_ratios(subject, rows):
    """A bar a row: Kest's time over the best peer's. The line at 1 is the peer."""
    rows = [row for row in rows if row.ratio is not None][::-1]
    bars = "\n".join(f"{row.ratio:.4g} {at} {row.goal.goal if row.goal else 'NaN'} {quoted(row.name)}"
                     for at, row in enumerate(rows))
    low = min([row.ratio for row in rows] + [0.1])
    gnuplot(
        os.path.join(PLOTS, subject + ".svg"),
        90 + 26 * len(rows),
        f"""$rows << EOD
{bars}
EOD
set logscale x
set xrange [{10 ** math.floor(math.log10(low))}:4]
set yrange [-0.7:{len(rows) - 0.3}]
set xlabel "time, as a part of the best peer's (logarithmic; left of 1 is faster)"
set key below
set style fill solid 0.9 noborder
set arrow from 1, graph 0 to 1, graph 1 nohead lw 2 lc rgb '#333333'
plot $rows using 1:2:({10 ** math.floor(math.log10(low))}):1:($2-0.3):($2+0.3):ytic(4) \\
       with boxxyerror lc rgb '#2a7f9e' title 'Kest', \\
     '' using 3:2 with points pt 7 ps 0.6 lc rgb '#d0542f' title 'goal'
""",
    )


def read_growth():
    """{plot: {operation: [(size, nanoseconds for one), ...]}}"""
    if not bench_table.rounds(RESULTS, GROWTH):
        return {}
    plots = {}
    for row in bench_table.read_rows(RESULTS, GROWTH):
        plot, operation = row.name.split(": ", 1)
        curve = sorted((int(size), time / int(size)) for size, time in row.medians.items())
        plots.setdefault(plot, {})[operation] = curve
    return plots


def file_name(plot):
    return "growth-" + plot.replace(" ", "-") + ".svg"


def plot_growth(plot, curves):
    data = "\n".join(f"${'c' + str(at)} << EOD\n" + "\n".join(f"{size} {time:.5g}" for size, time in curve) + "\nEOD"
                     for at, curve in enumerate(curves.values()))
    lines = ", ".join(f"$c{at} with linespoints lw 2 pt 7 ps 0.5 title {quoted(name)}"
                      for at, name in enumerate(curves))
    gnuplot(
        os.path.join(PLOTS, file_name(plot)),
        460,
        f"""{data}
set logscale xy
set format x '10^{{%T}}'
set xlabel 'how many'
set ylabel 'nanoseconds for each'
set key outside right
plot {lines}
""",
    )


def level_ratios(subject):
    """{level: {row: ratio}} of the results at lesser levels."""
    found = {}
    for level in LEVELS:
        results = RESULTS + "-" + level
        if bench_table.rounds(results, subject):
            found[level] = {row.name: row.ratio for row in bench_table.read_rows(results, subject)}
    return found


def subject_page(subject):
    rows = bench_table.read_rows(RESULTS, subject)
    levels = level_ratios(subject)
    heads = ["", "Kest", "best peer", *levels, "ratio", "goal", "stretch", ""]
    yield f"## {subject.replace('_', ' ').capitalize()}"
    yield ""
    yield f"![The ratios as bars](performance/{subject}.svg)"
    yield ""
    yield "| " + " | ".join(heads) + " |"
    yield "|---" * len(heads) + "|"
    for row in rows:
        name, kest, peer, ratio, goal, stretch, verdict = bench_table.cells(row)
        lesser = [f"{each[row.name]:.2f}" if each.get(row.name) else "-" for each in levels.values()]
        yield "| " + " | ".join([name, kest, peer, *lesser, f"**{ratio}**", goal, stretch, verdict]) + " |"
    remarks = [row for row in rows if row.goal and row.goal.remark]
    if remarks:
        yield ""
        yield from (f"- {row.name}: {row.goal.remark}" for row in remarks)
    yield ""
    plot_ratios(subject, rows)


def growth_page(plots):
    yield "## Growth"
    yield ""
    yield "What one unit, byte, element or message costs when there are 1 to 1,000,000 of them. A level curve is a linear"
    yield "operation; the beginning is what a call costs, the steps are the caches and fresh pages of memory."
    yield ""
    for plot, curves in plots.items():
        yield f"![{plot.capitalize()}](performance/{file_name(plot)})"
        yield ""
        plot_growth(plot, curves)
    yield "| | ns each at 1,000 | at 1,000,000 |"
    yield "|---|---|---|"
    for curves in plots.values():
        for operation, curve in curves.items():
            each = dict(curve)
            yield f"| {operation} | {each[1000]:.3g} | {each[1000000]:.3g} |"
    yield ""


def machine(context):
    with open("/proc/cpuinfo", encoding="ascii") as lines:
        model = next((line.split(":")[1].strip() for line in lines if line.startswith("model name")), "unknown")
    return f"{model}, {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz"


def page(compiler, commit):
    names = subjects()
    context, _ = bench_table.read_results(RESULTS, names[0])
    every = [row for name in names for row in bench_table.read_rows(RESULTS, name) if row.goal]
    met = sum(row.verdict() in ("met", "stretch met") for row in every)
    missing = bench_table.missing_peers()
    yield "# Performance"
    yield ""
    yield f"{met} of {len(every)} goals are met. `./bench` measures all of this anew; `scripts/performance.sh` makes this page."
    yield ""
    yield f"- Machine: {machine(context)}"
    yield f"- Compiler: {compiler}, preset `m32-bench` (32 bits, Release)"
    yield f"- Commit: {commit}"
    yield f"- Date: {context['date'][:10]}"
    yield f"- Peers: Debian's 32-bit packages; missing: {', '.join(missing) if missing else 'none'}"
    yield ""
    yield "How to read it: Kest and its peers do the same work in one process, in turns; a time is the median of 12 turns in"
    yield "three rounds, each a process of its own, and the ratio is Kest's time over that of the fastest peer in the row."
    yield "Below 1 is faster than every peer. Times on another machine differ, ratios much less; but where the cores are"
    yield "shared with other machines' work, some rows move between two figures, which their remarks give. The columns"
    yield "`plain` to `avx2` are the ratio on a processor that has no more than that, in a round of four turns; `ratio` is what"
    yield "this machine has. [Decision 7](decisions/0007-processor-levels.md) says how a level is chosen."
    yield ""
    for name in names:
        yield from subject_page(name)
    yield from growth_page(read_growth())


def main(compiler, commit):
    os.makedirs(PLOTS, exist_ok=True)
    for path in glob.glob(os.path.join(PLOTS, "*.svg")):
        os.remove(path)
    text = "\n".join(page(compiler, commit))
    with open(os.path.join(ROOT, "docs", "performance.md"), "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main(*sys.argv[1:])
