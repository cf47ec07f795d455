#!/usr/bin/python3
"""Plot tracker histories (the <NAME>.csv files a run writes beside its deck).

Time histories, one line per tracked node or element plus the total:

    /usr/bin/python3 tools/plot_trackers.py T1.csv V1.csv -o history.png
    /usr/bin/python3 tools/plot_trackers.py T1.csv --total -o totals.png

One tracker against another, for example a force-displacement curve; the rows
of the two files are paired by their time:

    /usr/bin/python3 tools/plot_trackers.py --x DISP.csv --y FORCE.csv -o curve.png

By default the "Total" column is used on both axes; --x-column and --y-column
choose another one by its header name ("Node 3").

Needs matplotlib (Debian's python3-matplotlib); it draws off screen (Agg).
"""

import argparse
import os
import sys


class TrackerError(Exception):
    pass


class TrackerHistory:
    """The columns of one tracker file: time, one per node/element, total."""

    def __init__(self, path):
        self.path = path
        self.name = os.path.splitext(os.path.basename(path))[0]
        self.times = []
        self.columns = {}  # header name -> list of values (None where a row has none)
        self.names = []
        self._read()

    def _read(self):
        try:
            with open(self.path, encoding="utf-8") as stream:
                lines = [line.strip() for line in stream if line.strip()]
        except OSError as error:
            raise TrackerError(f"cannot read {self.path}: {error.strerror}")
        if not lines:
            raise TrackerError(f"{self.path} holds no rows")

        header = [cell.strip() for cell in lines[0].split(",")]
        if header[0] == "Time":
            lines = lines[1:]
            self.names = header[1:]
        if not lines:
            raise TrackerError(f"{self.path} holds a header but no rows")
        if not self.names:
            # A history whose first print was not at time 0 has no header.
            width = len(lines[0].split(","))
            self.names = [f"Column {k}" for k in range(1, width - 1)] + ["Total"]
        for name in self.names:
            self.columns[name] = []

        for number, line in enumerate(lines, start=2 if header[0] == "Time" else 1):
            cells = [cell.strip() for cell in line.split(",")]
            try:
                values = [float(cell) for cell in cells]
            except ValueError:
                raise TrackerError(f"{self.path}, line {number}: not a number in '{line}'")
            self.times.append(values[0])
            if len(values) == len(self.names) + 1:
                for name, value in zip(self.names, values[1:]):
                    self.columns[name].append(value)
            elif len(values) == 2:
                # Trackers without per-item values (a MOMENT tracker, or one
                # without DIRECTION/TYPE) write the time and the total only.
                for name in self.names:
                    self.columns[name].append(values[1] if name == "Total" else None)
            else:
                raise TrackerError(
                    f"{self.path}, line {number}: {len(values)} values, the header names {len(self.names) + 1}")

    def column(self, name):
        if name not in self.columns:
            known = ", ".join(self.names)
            raise TrackerError(f"{self.path} has no column '{name}' (columns: {known})")
        return self.columns[name]


def pair_by_time(x_history, x_name, y_history, y_name):
    """Values of two trackers at the times both files hold."""
    y_at = {}
    for time, value in zip(y_history.times, y_history.column(y_name)):
        y_at[time] = value
    xs, ys = [], []
    for time, value in zip(x_history.times, x_history.column(x_name)):
        if time in y_at and value is not None and y_at[time] is not None:
            xs.append(value)
            ys.append(y_at[time])
    if not xs:
        raise TrackerError(f"{x_history.path} and {y_history.path} share no print time")
    return xs, ys


def plot_time(histories, totals_only, title, ylabel, out):
    import matplotlib.pyplot as plt

    figure, axes = plt.subplots(figsize=(8, 5))
    for history in histories:
        names = ["Total"] if totals_only else history.names
        for name in names:
            points = [(t, v) for t, v in zip(history.times, history.column(name)) if v is not None]
            if not points:
                continue
            label = history.name if totals_only else f"{history.name}: {name}"
            style = "--" if name == "Total" and not totals_only else "-"
            axes.plot([p[0] for p in points], [p[1] for p in points], style, marker=".", label=label)
    axes.set_xlabel("Time")
    axes.set_ylabel(ylabel or ", ".join(h.name for h in histories))
    axes.set_title(title or "Tracker history")
    axes.grid(True, alpha=0.3)
    if axes.lines:
        axes.legend(fontsize="small")
    figure.tight_layout()
    figure.savefig(out, dpi=100)
    plt.close(figure)


def plot_xy(x_history, x_name, y_history, y_name, title, out):
    import matplotlib.pyplot as plt

    xs, ys = pair_by_time(x_history, x_name, y_history, y_name)
    figure, axes = plt.subplots(figsize=(8, 5))
    axes.plot(xs, ys, "-", marker=".")
    axes.set_xlabel(f"{x_history.name} ({x_name})")
    axes.set_ylabel(f"{y_history.name} ({y_name})")
    axes.set_title(title or f"{y_history.name} against {x_history.name}")
    axes.grid(True, alpha=0.3)
    figure.tight_layout()
    figure.savefig(out, dpi=100)
    plt.close(figure)


def main(argv):
    parser = argparse.ArgumentParser(description="Plot tracker CSV histories to a PNG file.")
    parser.add_argument("files", nargs="*", help="tracker CSV files plotted against time")
    parser.add_argument("--x", metavar="CSV", help="tracker on the horizontal axis (with --y)")
    parser.add_argument("--y", metavar="CSV", help="tracker on the vertical axis (with --x)")
    parser.add_argument("--x-column", default="Total", help="column of the --x file (default Total)")
    parser.add_argument("--y-column", default="Total", help="column of the --y file (default Total)")
    parser.add_argument("--total", action="store_true", help="plot only the Total column of each file")
    parser.add_argument("--title", help="title of the plot")
    parser.add_argument("--ylabel", help="label of the vertical axis of a time plot")
    parser.add_argument("-o", "--output", required=True, help="PNG file to write")
    args = parser.parse_args(argv)

    xy = args.x is not None or args.y is not None
    if xy and (args.x is None or args.y is None):
        parser.error("--x and --y go together")
    if xy and args.files:
        parser.error("give either files to plot against time or --x and --y, not both")
    if not xy and not args.files:
        parser.error("no tracker file given")

    try:
        import matplotlib
    except ImportError:
        print("plot_trackers: matplotlib is not installed (Debian: python3-matplotlib)", file=sys.stderr)
        return 3
    matplotlib.use("Agg")

    try:
        if xy:
            plot_xy(TrackerHistory(args.x), args.x_column, TrackerHistory(args.y), args.y_column, args.title,
                    args.output)
        else:
            histories = [TrackerHistory(path) for path in args.files]
            plot_time(histories, args.total, args.title, args.ylabel, args.output)
    except TrackerError as error:
        print(f"plot_trackers: {error}", file=sys.stderr)
        return 2
    except OSError as error:
        print(f"plot_trackers: cannot write {args.output}: {error.strerror}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
