"""What ./bench measured, as a table.

usage: bench_table.py RESULTS SUBJECT...

Reads RESULTS/SUBJECT.ROUND.json and benchmarks/SUBJECT.goals, prints a line for each row: the
median of Kest, the best peer with its median, the ratio of the two, the goal, and whether it is met.
"""

import glob
import json
import os
import statistics
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")


class Goal:
    """A line of SUBJECT.goals."""

    def __init__(self, line):
        fields = line.rstrip("\n").split("\t") + ["", ""]
        self.row, self.goal = fields[0], float(fields[1])
        self.stretch = float(fields[2]) if fields[2] not in ("", "-") else None
        self.remark = fields[3]


class Row:
    """One row: the median time in nanoseconds of everyone in it."""

    def __init__(self, name, times, goal):
        self.name, self.goal = name, goal
        self.medians = {who: statistics.median(each) for who, each in times.items()}
        self.kest = self.medians.get("kest")
        peers = {who: time for who, time in self.medians.items() if who != "kest"}
        self.peer = min(peers, key=peers.get) if peers else None
        self.ratio = self.kest / peers[self.peer] if peers and self.kest else None

    def verdict(self):
        if self.ratio is None:
            return "not run"
        if self.goal is None:
            return ""
        if self.goal.stretch is not None and self.ratio <= self.goal.stretch:
            return "stretch met"
        return "met" if self.ratio <= self.goal.goal else "NOT MET"


def read_goals(subject):
    """None at all for a subject without peers."""
    if not os.path.exists(os.path.join(ROOT, "benchmarks", subject + ".goals")):
        return []
    with open(os.path.join(ROOT, "benchmarks", subject + ".goals"), encoding="utf-8") as lines:
        return [Goal(line) for line in lines if line.strip() and not line.startswith("#")]


def rounds(results, subject):
    """The files of a subject, one a round; none when it has not been measured."""
    return sorted(glob.glob(os.path.join(results, subject + ".*.json")))


def read_results(results, subject):
    """The context of the first round, and {row: {who: [nanoseconds, ...]}} of all."""
    context, rows = None, {}
    for path in rounds(results, subject):
        with open(path, encoding="utf-8") as file:
            report = json.load(file)
        context = context or report["context"]
        for run in report["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            row, who, *how = run["run_name"].split("/")
            # Processor time is steadier, but work that waits is measured by the clock.
            by_clock = "real_time" in how or "manual_time" in how
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
            time = run["real_time" if by_clock else "cpu_time"] * scale
            rows.setdefault(row, {}).setdefault(who, []).append(time)
    return context, rows


def read_rows(results, subject):
    """The rows of a subject, those with goals first and in the order of the goals."""
    _, times = read_results(results, subject)
    rows = [Row(goal.row, times.pop(goal.row, {}), goal) for goal in read_goals(subject)]
    return rows + [Row(name, each, None) for name, each in times.items()]


def missing_peers():
    with open(os.path.join(ROOT, "build/bench/peers/missing"), encoding="utf-8") as lines:
        return lines.read().split()


def time_text(nanoseconds):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= scale:
            return f"{nanoseconds / scale:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def cells(row):
    """A row as texts: name, Kest, best peer, ratio, goal, stretch, verdict."""
    goal = row.goal
    return (
        row.name,
        time_text(row.kest) if row.kest else "-",
        f"{row.peer} {time_text(row.medians[row.peer])}" if row.peer else "-",
        f"{row.ratio:.3f}" if row.ratio else "-",
        f"{goal.goal:g}" if goal else "-",
        f"{goal.stretch:g}" if goal and goal.stretch is not None else "-",
        row.verdict(),
    )


def main(results, *subjects):
    total = met = 0
    for subject in (each for each in subjects if read_goals(each)):
        print(f"\n{subject:<46} {'Kest':>9} {'best peer':>20} {'ratio':>7} {'goal':>6} {'stretch':>7}")
        for row in read_rows(results, subject):
            name, kest, peer, ratio, goal, stretch, verdict = cells(row)
            print(f"  {name:<44} {kest:>9} {peer:>20} {ratio:>7} {goal:>6} {stretch:>7}  {verdict}")
            total += row.goal is not None
            met += verdict in ("met", "stretch met")
    for peer in missing_peers():
        print(f"missing: {peer}, which could not be fetched")
    print(f"\n{met} of {total} goals met")


if __name__ == "__main__":
    main(*sys.argv[1:])
