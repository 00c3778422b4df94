"""Makes docs/pictures: small copies of the demo's pictures and a plot of the table in docs/performance.md.

pictures.py DEMO_DIR PERFORMANCE_MD OUT_DIR
"""
import pathlib
import sys

import matplotlib
from PIL import Image

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402 - after the backend is chosen

# The README's strip, in its order.
STRIP = [
    "street-0", "edges", "orientation", "distance",
    "corners-fast", "track", "history", "foreground/silhouette-0100",
    "scratched", "inpaint", "means", "detect",
]  # fmt: skip


def small_copies(demo, out):
    for name in STRIP:
        picture = Image.open(demo / f"{name}.png").convert("RGB")
        small = picture.resize((320, 320 * picture.height // picture.width), Image.Resampling.LANCZOS)
        small.save(out / f"{pathlib.PurePath(name).name.split('-0')[0]}.jpg", quality=85, optimize=True)


def groups(text):
    """The first table: (heading of a group, [(copies at 640x480, at 1920x1080)])."""
    found = []
    for line in text[text.index("| Row |"):].splitlines()[2:]:
        if not line:
            return found
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if cells[0].startswith("**"):
            # Of a heading only the subject; under which conditions is said in the table.
            found.append((cells[0].strip("*").split(";")[0].replace(", a tenth of the pixels marked", ""), []))
        else:
            found[-1][1].append((float(cells[1]), float(cells[2])))
    return found


def plot(text, out):
    pyplot.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "rvxcv", "font.family": "sans-serif",
                            "font.size": 9})
    table = groups(text)
    figure, axes = pyplot.subplots(figsize=(8.6, 0.27 * len(table) + 1.1), layout="constrained")
    for size, colour, shift in ((0, "#1f6fb4", -0.16), (1, "#e07b1a", 0.16)):
        points = [(row[size], place + shift) for place, (_, rows) in enumerate(table) for row in rows]
        label = ("640 x 480", "1920 x 1080")[size]
        axes.scatter(*zip(*points), s=11, color=colour, alpha=0.65, linewidths=0, label=label)
    axes.axvline(1, color="#444444", linewidth=1)
    axes.set_xscale("log")
    axes.set_xticks([0.03, 0.1, 0.3, 1, 3, 10, 30, 100], ["0.03", "0.1", "0.3", "1 copy", "3", "10", "30", "100"])
    axes.minorticks_off()
    axes.set_yticks(range(len(table)), [heading for heading, _ in table])
    axes.set_ylim(len(table) - 0.4, -0.6)
    axes.grid(axis="both", color="#dddddd", linewidth=0.6)
    axes.set_axisbelow(True)
    axes.set_xlabel("time of a call in copies of a 32f image of the same size; each dot a benchmark")
    axes.legend(loc="lower left", framealpha=1, fontsize=8)
    figure.savefig(out / "performance.svg", metadata={"Date": None, "Creator": None})


def main():
    demo, performance, out = map(pathlib.Path, sys.argv[1:])
    out.mkdir(parents=True, exist_ok=True)
    small_copies(demo, out)
    plot(performance.read_text(), out)


if __name__ == "__main__":
    main()
