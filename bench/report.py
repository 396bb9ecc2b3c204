"""Runs the benchmarks that rows.json names and reports on them; scripts/bench calls it.

Every program prints JSON lines (ResultLog.h) or is a Google Benchmark. A row of the table compares
one of a work's contenders with others, by the median unless it names a quantile, or tells how a
work has grown from one of its sizes to another; "most" and "least" are its bar.
"""

import json
import math
import os
import platform
import subprocess
import sys
import time

NOTES = "bench/notes.md"
REPORT = "docs/benchmarks.md"
SERIES = "build/benchmark-series.md"
GROWTH = "growth: "
FROM, TO = "2500", "10000"
COLOURS = ["#1f5fa8", "#c0392b", "#2e8b57", "#8e5ea2", "#d4880f", "#4a4a4a", "#17a2b8", "#a0522d",
           "#6b8e23"]


class Results:
    """Quantiles by work and contender; a Google Benchmark's program stands for the work."""

    def __init__(self):
        self.series = {}
        self.failed = []

    def add(self, work, contender, unit, quantiles, count):
        if quantiles:
            self.series.setdefault(work, {})[contender] = {
                "unit": unit, "quantiles": quantiles, "count": count}

    def quantile(self, work, contender, part=0.5):
        found = self.series.get(work, {}).get(contender)
        if found is None:
            return None
        values = found["quantiles"]
        return values[round(part * (len(values) - 1))]


def run_lines(results, command):
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, timeout=900)
    for line in done.stdout.splitlines():
        if line.startswith("{"):
            one = json.loads(line)
            results.add(one["work"], one["contender"], one["unit"], one["quantiles"], one["count"])
    return done.returncode == 0


def run_google(results, name, command, program, quick):
    command = command + ["--benchmark_format=json", "--benchmark_enable_random_interleaving=true",
                         "--benchmark_repetitions=" + ("3" if quick else "9"),
                         "--benchmark_min_time=" + ("0.02" if quick else "0.1")]
    if "filter" in program:
        command.append("--benchmark_filter=" + program["filter"])
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, timeout=900)
    if done.returncode != 0 or not done.stdout.strip():
        return False
    values = {}
    for one in json.loads(done.stdout)["benchmarks"]:
        if one.get("run_type") == "aggregate" or one.get("error_occurred"):
            continue
        values.setdefault((one["run_name"], one["time_unit"]), []).append(
            one["real_time" if one["run_name"].endswith("/real_time") else "cpu_time"])
        if "allocations" in one:
            values.setdefault((one["run_name"] + " allocations", ""), []).append(one["allocations"])
    for (contender, unit), times in values.items():
        results.add(name, contender, unit, sorted(times), len(times))
    return True


def run_program(results, root, name, program, quick):
    binaries = os.path.join(root, "build/release/bin")
    path = os.path.join(binaries, name)
    if not os.path.exists(path):
        print("-- left out: " + name + " (not built)")
        return
    command = [path] + [a.replace("{bin}", binaries) for a in program.get("arguments", [])]
    if program.get("display"):
        command = [os.path.join(root, "scripts/with-display")] + command
    start = time.time()
    try:
        if program["kind"] == "google":
            fine = run_google(results, name, command, program, quick)
        else:
            fine = run_lines(results, command + (program.get("quick", []) if quick else []))
    except (subprocess.TimeoutExpired, OSError, ValueError) as failure:
        print(failure, file=sys.stderr)
        fine = False
    print(f"-- {name}: {time.time() - start:.0f} s" + ("" if fine else ", failed"), flush=True)
    if not fine:
        results.failed.append(name)


def peers_of(results, row, work):
    if row["against"] == "others":
        return {name: (work, name) for name in results.series.get(work, {}) if name != row["ours"]}
    peers = {}
    for name in row["against"]:
        other, _, contender = name.rpartition(" / ")
        peers[contender] = (other or work, contender)
    return peers


def verdict_of(figure, row):
    if "most" not in row and "least" not in row:
        return "reported"
    met = figure <= row["most"] if "most" in row else figure >= row["least"]
    return "met" if met else "**not met**"


def judge_growth(results, row, bar):
    """How much more four times as many regions cost, as a share of what n log n allows."""
    low, high = (results.quantile(row["growth"], size) for size in (FROM, TO))
    if not low or not high:
        return [row["title"], "", "", "", bar, "not measured"]
    allowed = int(TO) * math.log(int(TO)) / (int(FROM) * math.log(int(FROM)))
    figure = high / low / allowed
    return [row["title"], "n log n, from 2,500 to 10,000 regions",
            f"{high / 1000:.4g} : {low / 1000:.4g} ms", f"{figure:.2f}", bar,
            verdict_of(figure, row)]


def judge(results, row):
    """The cells of one row: work, against, measured, ratio, bar, verdict."""
    if "growth" in row:
        return judge_growth(results, row, "at most %g" % row["most"])
    work = row.get("program") or row["work"]
    part = row.get("quantile", 0.5)
    ours_name = row["ours"] + (" " + row["counter"] if "counter" in row else "")
    ours = results.quantile(work, ours_name, part)
    bar = "at most %g" % row["most"] if "most" in row else \
        "at least %g" % row["least"] if "least" in row else "–"
    if ours is None:
        return [row["title"], "", "", "", bar, "not measured"]
    unit = results.series[work][ours_name]["unit"]
    if row.get("value"):
        against, measured, figure = "–", "", ours
        shown = f"{ours:.3g} {unit}".strip()
    else:
        known = {name: results.quantile(*place, part)
                 for name, place in peers_of(results, row, work).items()}
        known = {name: value for name, value in known.items() if value}
        if not known:
            return [row["title"], "", "", "", bar, "not measured"]
        best = (max if "least" in row else min)(known, key=known.get)
        against = best if len(known) == 1 else f"{best}, the best of {len(known)}"
        figure = ours / known[best]
        shown = f"{figure:.2f}" if figure < 10 else f"{figure:.0f}"
        measured = f"{ours:.4g} : {known[best]:.4g} {unit}"
    return [row["title"], against, measured, shown, bar, verdict_of(figure, row)]


def markdown(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + " --- |" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def print_table(head, rows):
    plain = [[cell.replace("**", "") for cell in row] for row in [head] + rows]
    widths = [max(len(row[i]) for row in plain) for i in range(len(head))]
    for row in plain:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def ticks_between(low, high):
    ticks = []
    for power in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1):
        ticks += [factor * 10 ** power for factor in (1, 2, 5)
                  if low <= factor * 10 ** power <= high]
    return ticks


def picture(results, work, title):
    """How large a share of the calls was answered within a time, as an SVG."""
    series = results.series.get(work)
    if not series:
        return None
    width, height, left, top, bottom = 760, 400, 60, 40, 50
    inner_width, inner_height = width - left - 190, height - top - bottom
    every = [value for one in series.values() for value in one["quantiles"] if value > 0]
    low, high = min(every) / 1.1, max(every) * 1.1
    unit = next(iter(series.values()))["unit"].replace("us", "µs")

    def x(value):
        return left + inner_width * math.log(max(value, low) / low) / math.log(high / low)

    def y(share):
        return top + inner_height * (1 - share)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
           f'font-family="sans-serif" font-size="12">',
           f'<rect width="{width}" height="{height}" fill="white"/>',
           f'<text x="{left}" y="22" font-size="15">{title}</text>']
    for value in ticks_between(low, high):
        out.append(f'<path d="M{x(value):.1f} {top}V{y(0):.1f}" stroke="#ddd"/>'
                   f'<text x="{x(value):.1f}" y="{y(0) + 16:.1f}" text-anchor="middle">'
                   f'{value:g}</text>')
    for share in (0, 0.25, 0.5, 0.75, 0.99):
        out.append(f'<path d="M{left} {y(share):.1f}H{left + inner_width}" stroke="#ddd"/>'
                   f'<text x="{left - 6}" y="{y(share) + 4:.1f}" text-anchor="end">'
                   f'{share * 100:g} %</text>')
    out.append(f'<text x="{left + inner_width / 2}" y="{height - 10}" text-anchor="middle">'
               f'{unit}, logarithmic</text>')
    for number, (name, one) in enumerate(series.items()):
        colour = COLOURS[number % len(COLOURS)]
        last = len(one["quantiles"]) - 1
        points = " ".join(f"{x(value):.1f},{y(i / last):.1f}"
                          for i, value in enumerate(one["quantiles"])) if last > 0 else ""
        out.append(f'<polyline points="{points}" fill="none" stroke="{colour}" '
                   f'stroke-width="{2.5 if number == 0 else 1.5}"/>')
        line = top + 14 + number * 20
        out.append(f'<path d="M{width - 180} {line - 4}h20" stroke="{colour}" stroke-width="3"/>'
                   f'<text x="{width - 154}" y="{line}">{name}</text>')
    return "\n".join(out + ["</svg>"]) + "\n"


def growth_picture(results):
    """Cost against size, both logarithmic, as an SVG; a dashed line is n log n."""
    lines = {work[len(GROWTH):]: sorted((int(size), one["quantiles"][len(one["quantiles"]) // 2])
                                        for size, one in sizes.items())
             for work, sizes in results.series.items() if work.startswith(GROWTH)}
    if not lines:
        return None
    width, height, left, top, bottom = 760, 420, 70, 40, 50
    inner_width, inner_height = width - left - 210, height - top - bottom
    every = [cost for points in lines.values() for _, cost in points if cost > 0]
    sizes = [size for size, _ in next(iter(lines.values()))]
    low, high = min(every) / 1.5, max(every) * 1.5

    def x(size):
        return left + inner_width * math.log(size / sizes[0]) / math.log(sizes[-1] / sizes[0])

    def y(cost):
        return top + inner_height * (1 - math.log(cost / low) / math.log(high / low))

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
           f'font-family="sans-serif" font-size="12">',
           f'<rect width="{width}" height="{height}" fill="white"/>',
           f'<text x="{left}" y="22" font-size="15">Cost against size</text>']
    for size in sizes:
        out.append(f'<text x="{x(size):.1f}" y="{height - 30}" text-anchor="middle">{size}</text>')
    for power in range(math.ceil(math.log10(low)), math.floor(math.log10(high)) + 1):
        out.append(f'<path d="M{left} {y(10 ** power):.1f}h{inner_width}" stroke="#ddd"/>'
                   f'<text x="{left - 6}" y="{y(10 ** power) + 4:.1f}" text-anchor="end">'
                   f'{10 ** power / 1000:g} ms</text>')
    out.append(f'<text x="{left + inner_width / 2}" y="{height - 10}" text-anchor="middle">'
               f'regions, both axes logarithmic; dashed: n log n</text>')
    for number, (name, points) in enumerate(lines.items()):
        colour = COLOURS[number % len(COLOURS)]
        first_size, first_cost = points[0]
        drawn = " ".join(f"{x(size):.1f},{y(cost):.1f}" for size, cost in points)
        allowed = [(size, first_cost * size * math.log(size) /
                    (first_size * math.log(first_size))) for size, _ in points]
        dashed = " ".join(f"{x(size):.1f},{y(cost):.1f}" for size, cost in allowed if cost < high)
        line = top + 14 + number * 20
        out.append(f'<polyline points="{drawn}" fill="none" stroke="{colour}" stroke-width="2"/>'
                   f'<polyline points="{dashed}" fill="none" stroke="{colour}" '
                   f'stroke-dasharray="3 4" stroke-opacity="0.5"/>'
                   f'<path d="M{width - 200} {line - 4}h20" stroke="{colour}" stroke-width="3"/>'
                   f'<text x="{width - 174}" y="{line}">{name}</text>')
    return "\n".join(out + ["</svg>"]) + "\n"


def machine():
    model = platform.processor() or platform.machine()
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as info:
            model = next(line.split(":", 1)[1].strip() for line in info
                         if line.startswith("model name"))
        virtual = any("hypervisor" in line for line in open("/proc/cpuinfo", encoding="utf-8"))
    except (OSError, StopIteration):
        virtual = False
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True,
                              check=False).stdout.splitlines()[:1]
    system = platform.system() + " " + platform.release()
    load = os.getloadavg()[0]
    return (f"{os.cpu_count()} cores of {model}" + (" in a virtual machine" if virtual else "") +
            f", {system}, {compiler[0] if compiler else 'unknown compiler'}. "
            f"Load average before the first run: {load:.2f}.")


def detail(results, work):
    rows = []
    for name, one in results.series[work].items():
        cells = [f"{one['quantiles'][round(part * (len(one['quantiles']) - 1))]:.4g}"
                 for part in (0.1, 0.5, 0.9, 0.99)]
        rows.append([name, one["unit"], str(one["count"])] + cells)
    return f"### {work}\n\n" + markdown(
        ["contender", "unit", "samples", "10 %", "50 %", "90 %", "99 %"], rows)


def write_text(root, name, text):
    with open(os.path.join(root, name), "w", encoding="utf-8") as out:
        out.write(text)


def write_report(root, results, head, rows, table, about):
    drawings = [(one["file"], one["title"], picture(results, one["work"], one["title"]))
                for one in table["pictures"]]
    drawings.append(("bench-growth.svg", "Cost against size", growth_picture(results)))
    pictures = []
    for file, title, drawn in drawings:
        if drawn is None:
            continue
        write_text(root, "docs/pictures/" + file, drawn)
        pictures.append(f"![{title}](pictures/{file})")
    with open(os.path.join(root, NOTES), encoding="utf-8") as notes:
        text = notes.read()
    parts = ["# Benchmarks",
             "<!-- Written by scripts/bench; what does not come from a run stands in " + NOTES +
             ". -->", "```\nscripts/bench\n```", about, "## Ratios and bars", markdown(head, rows),
             text.strip(), "## Distributions and growth"] + pictures
    write_text(root, REPORT, "\n\n".join(parts) + "\n")


def main():
    root = sys.argv[1]
    quick = "--quick" in sys.argv
    wanted = [a for a in sys.argv[2:] if not a.startswith("-")]
    with open(os.path.join(root, "bench/rows.json"), encoding="utf-8") as source:
        table = json.load(source)
    about = machine()
    results = Results()
    for name, program in table["programs"].items():
        if not wanted or name in wanted:
            run_program(results, root, name, program, quick)
    head = ["work", "against", "measured", "ratio", "bar", ""]
    rows = [judge(results, row) for row in table["rows"]]
    write_text(root, SERIES, "\n\n".join(["# All measurements", about] + [
        detail(results, work) for work in results.series]) + "\n")
    print()
    print_table(head, [row for row in rows if not wanted or row[-1] != "not measured"])
    if not quick and not wanted:
        write_report(root, results, head, rows, table, about)
        print("\nwritten: " + REPORT)
    print("every series: " + SERIES)
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
