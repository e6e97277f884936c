"""Writes docs/benchmarks.md and its plots from the results of vrl_bench: page.py RESULTS.json

Times are processor times (by the clock where threads take part), medians where a benchmark was repeated. A ratio is our time through the peer's, so below 1 is faster.
"""

import json
import os
import re
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plot

PAGE = "docs/benchmarks.md"
PLOTS = "docs/benchmarks"
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Results:
    """Benchmarks by name: time in milliseconds and the counters."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            results = json.load(file)
        self.context = results["context"]
        self.by_name = {}
        for run in results["benchmarks"]:
            if run.get("error_occurred") or run.get("aggregate_name", "median") != "median":
                continue
            name = run["run_name"].split("/min_time:")[0]
            is_median = run["run_type"] == "aggregate"
            if is_median or name not in self.by_name:
                self.by_name[name] = run

    def counter(self, name, counter):
        return self.by_name.get(name, {}).get(counter)

    def time(self, name, clock="cpu_time"):
        run = self.by_name.get(name)
        return run and run[clock] * NANOSECONDS[run["time_unit"]] / 1e6

    def ratio(self, ours, peer):
        mine, other = self.time(ours), self.time(peer)
        return mine / other if mine and other else None

    def cases(self, benchmark):
        """What follows `benchmark`/ in the names, in the order they ran in."""
        return [name[len(benchmark) + 1:] for name in self.by_name if name.startswith(benchmark + "/")]


def number(value):
    if value is None:
        return "-"
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def filling(results):
    peers = ["AggPacked", "AggUnpacked", "CairoGood", "CairoBest"]
    rows = [[case, number(results.time(f"FillPainter/{case}")), number(results.time(f"FillPainterDraft/{case}"))] +
            [number(results.ratio(f"FillPainter/{case}", f"{peer}/{case}")) for peer in peers]
            for case in results.cases("FillPainter")]
    return table(["height / outline", "best, ms", "draft, ms", "/ AGG packed", "/ AGG unpacked", "/ cairo good", "/ cairo best"], rows)


def feathers(results):
    rows = []
    for bits, pixel in (8, "GW_Pixel8"), (16, "GW_Pixel16"):
        for case in results.cases(f"ThreeBlurs<{pixel}>"):
            ours = [f"FeatherBuffer<{pixel}>/{quality}/{case}" for quality in (0, 1)]
            rows.append([str(bits), case] + [number(results.time(name)) for name in ours] +
                        [number(results.ratio(name, f"ThreeBlurs<{pixel}>/{case}")) for name in ours])
    return table(["bits", "radius, px", "draft, ms", "best, ms", "draft / three box blurs", "best / three box blurs"], rows)


def offsets(results):
    rows = []
    for case in results.cases("OffsetPolygons"):
        ours, peer = f"OffsetCurves/{case}", f"OffsetPolygons/{case}"
        family, vertices, distance = case.split("/")
        rows.append([family, vertices, distance, number(results.time(ours)), number(results.ratio(ours, peer)),
                     number(results.counter(ours, "vertices_out")), number(results.counter(peer, "vertices_out"))])
    return table(["outline", "vertices", "distance, px", "ms", "/ Clipper", "vertices out", "Clipper's"], rows)


def traces(results):
    rows = []
    for case in results.cases("AutoTrace"):
        ours, peer = f"AutoTrace/{case}", f"AutoTracePotrace/{case}"
        off = [results.counter(name, "off") for name in (ours, peer)]
        vertices = [results.counter(name, "vertices") for name in (ours, peer)]
        rows.append([case, number(results.time(ours)), number(results.ratio(ours, peer)),
                     number(vertices[0] / vertices[1] if all(vertices) else None), *map(number, off)])
    return table(["picture", "ms", "/ potrace", "vertices / potrace's", "mean distance, px", "potrace's"], rows)


def stages(results):
    names = ["preprocess", "trace", "trace_and_merge", "fit", "shapes"]
    pictures = [case for case in results.cases("AutoTrace")]
    return table(["picture"] + [name.replace("_", " ") + ", ms" for name in names],
                 [[case] + [number(results.time(f"Stage/{name}/{case}")) for name in names] for case in pictures])


def maps(results):
    rows = [[case, number(results.time(f"Trace/{case}")), number(results.ratio(f"Trace/{case}", f"Potrace/{case}"))]
            for case in results.cases("Trace")]
    return table(["picture", "ms", "/ all of potrace"], rows)


def masks(results):
    rows = []
    for name in results.by_name:
        match = re.fullmatch(r"Mask(Plain|Feathered)<GW_Pixel(\d+)>/(\d)(?:/(\d+))?", name)
        if match:
            kind, bits, quality, radius = match.groups()
            rows.append([kind.lower(), bits, ["draft", "best"][int(quality)], radius or "-", "1", number(results.time(name))])
    for case in results.cases("MaskVariableFeather"):
        radius, threads = case.split("/")[:2]
        rows.append(["variable feather", "8", "best", radius, threads, number(results.time(f"MaskVariableFeather/{case}", "real_time"))])
    return table(["mask", "bits", "quality", "radius, px", "threads", "ms"], rows)


def growth(results, title, x_label, lines):
    """One plot of times; `lines` are (label, [(x, benchmark name)])."""
    figure, axes = plot.subplots(figsize=(6, 3.6))
    for label, points in lines:
        points = [(x, results.time(name)) for x, name in points if results.time(name)]
        if points:
            axes.loglog(*zip(*points), marker="o", label=label)
    axes.set(title=title, xlabel=x_label, ylabel="ms")
    axes.grid(True, which="major", alpha=0.3)
    axes.legend()
    path = os.path.join(PLOTS, re.sub(r"\W+", "_", title.lower()) + ".svg")
    figure.savefig(path, bbox_inches="tight", metadata={"Date": None})
    plot.close(figure)
    return f"![{title}]({os.path.relpath(path, os.path.dirname(PAGE))})\n"


def plots(results):
    def sized(benchmark, pattern):
        matches = [(re.fullmatch(pattern, case), case) for case in results.cases(benchmark)]
        return [(int(match.group(1)), f"{benchmark}/{case}") for match, case in matches if match]

    yield growth(results, "Offset by 5 px", "vertices of a ragged outline",
                 [("vrl", sized("OffsetCurves", r"traced/(\d+)/5")), ("Clipper", sized("OffsetPolygons", r"traced/(\d+)/5"))])
    yield growth(results, "Fitting an outline", "points",
                 [(kind, sized("FitOutline", rf"{kind}/(\d+)")) for kind in ("smooth", "noise")])
    yield growth(results, "Finding regions and edges", "side of the picture, px",
                 [("vrl", sized("Trace", r"growth/(\d+)")), ("potrace, curves included", sized("Potrace", r"growth/(\d+)"))])
    yield growth(results, "Feathering a 4K buffer", "radius, px",
                 [("vrl, 8 bits", sized("FeatherBuffer<GW_Pixel8>", r"1/(\d+)")), ("vrl, 16 bits", sized("FeatherBuffer<GW_Pixel16>", r"1/(\d+)")),
                  ("three box blurs, 8 bits", sized("ThreeBlurs<GW_Pixel8>", r"(\d+)"))])


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search(r"model name\s*: (.*)", file.read())
    return model.group(1) if model else "unknown processor"


def page(results):
    context = results.context
    return "\n".join([
        "# Benchmarks\n",
        "`script/bench` wrote this page from one run of all benchmarks. Times are processor times, those of variable feathers by "
        "the clock. A column \"/ peer\" is "
        "our time through the peer's time on the same input in the same run: below 1 we are faster. The machine is shared and "
        "noisy, so read ratios, not milliseconds.\n",
        f"{machine()}, {context['num_cpus']} processors seen, {os.environ.get('VRL_BENCH_COMPILER', 'compiler unknown')}, "
        f"preset release, {context['date'][:10]}.\n",
        "## Filling outlines\n", "A picture of the given height, 16:9, one outline across it.\n", filling(results),
        "## Masks\n", "3840x2160, an outline of 200 vertices, everything from shape to buffer.\n", masks(results),
        "## Feather\n",
        "A 3840x2160 buffer along both axes, beside three passes of OpenCV's box blur, which give the same falloff.\n", feathers(results),
        "## Offset outlines\n", "Curves in and out, beside Clipper on the same outlines as polygons at the same tolerance (0.02 px).\n",
        offsets(results),
        "## Traces\n",
        "From a picture in memory to shapes at a tolerance of 1 px, beside libpotrace on the same bitmap. The distance is that from "
        "the pixels' sides along the outlines to the curves.\n", traces(results),
        "What the stages take:\n", stages(results),
        "Finding regions and shared edges alone:\n", maps(results),
        "## Growth\n", *plots(results)])


def main():
    results = Results(sys.argv[1])
    os.makedirs(PLOTS, exist_ok=True)
    matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "vrl", "font.size": 10})
    text = page(results)
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(text)


main()
