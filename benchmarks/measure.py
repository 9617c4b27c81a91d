"""What scripts/bench runs: every benchmark beside the nearest thing that does the same work, as tables and pictures.

A row is a function that yields figures. Both sides of a figure are measured by turns in one run, so that they see the same
machine; the ratio of each turn counts, not the times.
"""

import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
PROGRAMS = PROJECT / "build/release/benchmarks"
SANDBOX = PROJECT / "build/release/sandbox/confera-sandbox"
JUDGE = PROJECT / "tests/js"

turns = 5
ROWS = {}


@dataclass
class Figure:
    """`kit` and `beside`: one value a turn. The goal holds for `of`: the kit's own median, the median ratio, or the
    median of what the kit has more."""

    row: str
    what: str
    unit: str
    kit: list
    beside_what: str = ""
    beside: list = None
    goal: float = None
    of: str = "kit"
    at_least: bool = False
    size: int = None  # of a series, for its plot

    def ratios(self):
        return [k / b for k, b in zip(self.kit, self.beside)] if self.beside and self.unit != "dB" else []

    def excess(self):
        return [k - b for k, b in zip(self.kit, self.beside)] if self.beside else []

    def reached(self):
        values = {"kit": self.kit, "ratio": self.ratios(), "excess": self.excess()}[self.of]
        return statistics.median(values)

    def is_met(self):
        if self.goal is None:
            return None
        return self.reached() >= self.goal if self.at_least else self.reached() <= self.goal

    def goal_text(self):
        if self.goal is None:
            return ""
        unit = "" if self.of == "ratio" else " " + self.unit
        more = " more" if self.of == "excess" else ""
        return f"{'at least' if self.at_least else 'at most'} {self.goal:.3g}{' x' if self.of == 'ratio' else unit}{more}"


def row(title):
    def add(function):
        ROWS[function.__name__.replace("_", "-")] = (title, function)
        return function

    return add


# --- Running programs


def in_turn(command):
    """`command` ahead of the machine's other work, where that is allowed."""
    if in_turn.prefix is None:
        allowed = shutil.which("chrt") and subprocess.run(["chrt", "-r", "10", "true"], capture_output=True).returncode == 0
        in_turn.prefix = ["chrt", "-r", "10"] if allowed else []
    return in_turn.prefix + [str(part) for part in command]


in_turn.prefix = None


def pinned(command):
    """For programs of one thread: on one core."""
    return ["taskset", "-c", str(max(os.sched_getaffinity(0)))] + in_turn(command) if shutil.which("taskset") else in_turn(command)


def run(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def google(program, on=pinned, times=1):
    """Of a Google Benchmark program: for each benchmark its turns (so many times as many), taken in random order, clocks in milliseconds."""
    out = run(on([PROGRAMS / program, "--benchmark_format=json", "--benchmark_min_time=0.05",
                  f"--benchmark_repetitions={turns * times}", "--benchmark_enable_random_interleaving=true"]))
    ms = {"ns": 1e-6, "us": 1e-3, "ms": 1}
    benchmarks = {}
    for each in json.loads(out)["benchmarks"]:
        if each["run_type"] == "iteration":
            for clock in "cpu_time", "real_time":
                each[clock] *= ms[each["time_unit"]]
            benchmarks.setdefault(each["run_name"], []).append(each)
    return benchmarks


def figures(program, *arguments):
    """Of one run of a program that prints Figures.h: for each kind of time its summary."""
    summaries = map(json.loads, run(in_turn([PROGRAMS / program, "--json", *arguments])).splitlines())
    return {summary["what"]: summary for summary in summaries}


def column(rows, what):
    return [row[what] for row in rows]


def in_turns(program):
    """Of every turn of a program that prints Figures.h: a kind of time, its median unless told."""
    rows = [figures(program) for _ in range(turns)]
    return lambda what, which="median": column(column(rows, what), which)


def by_judge(script, *arguments, text=True):
    environment = os.environ | {"CONFERA_SANDBOX": str(SANDBOX)}
    return subprocess.run(in_turn(["node", script, *arguments]), cwd=JUDGE, env=environment, check=True,
                          stdout=subprocess.PIPE, text=text).stdout


# --- The rows


@row("60 s of streamed recognition, beside the vendor's JavaScript client")
def recognition():
    with tempfile.TemporaryDirectory() as folder:
        sentence = by_judge("sentence.mjs", "Good morning.", text=False)
        silence = lambda seconds: bytes(int(seconds * 16000) * 2)
        once = silence(0.5) + sentence + silence(2)
        pcm = (once * (60 * 32000 // len(once)))[: -len(silence(2))]  # ends with the last word
        path = Path(folder, "speech.pcm")
        path.write_bytes(pcm)
        kit, judge = [], []
        for _ in range(min(turns, 2)):  # a minute each
            kit.append(json.loads(run(in_turn([PROGRAMS / "kit-recognition", SANDBOX, path]))))
            judge.append(json.loads(by_judge("stream.mjs", path)))
    if any(each["phrases"] != judge[0]["phrases"] for each in kit + judge):
        raise RuntimeError(f"Not the same was recognised: {kit} {judge}")
    beside = "vendor's client"
    yield Figure("recognition", "CPU", "ms", column(kit, "cpuMs"), beside, column(judge, "cpuMs"), 0.2, "ratio")
    yield Figure("recognition", "peak memory", "MiB", column(kit, "peakMiB"), beside, column(judge, "peakMiB"), 1 / 3, "ratio")
    yield Figure("recognition", "last byte of sound to last result", "ms", column(kit, "lastResultMs"), beside,
                 column(judge, "lastResultMs"), 1.1, "ratio")


@row("Speaking a sentence: from the call to the first sound, beside the vendor's JavaScript client")
def speaking():
    texts = ["Good morning.", "Where is the railway station?", "I would like a room for two nights, please."] * 4
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write("\n".join(texts))
        file.flush()
        kit, judge = [], []
        for _ in range(turns):
            kit.append(figures("kit-speaking", SANDBOX, file.name))
            judge.append(statistics.median(json.loads(by_judge("first-sound.mjs", file.name))))
    of = lambda what: column(column(kit, what), "median")
    yield Figure("speaking", "first sound", "ms", of("from the call to the first sound"), "vendor's client", judge, 1.1, "ratio")
    yield Figure("speaking", "of it, after the sandbox's first piece of 100 ms", "ms",
                 of("from the sandbox's first piece to the first sound"), goal=100)


@row("The kit's own share of a turn of the conversation")
def turn():
    of = in_turns("turn")
    yield Figure("turn", "phrase recognised to translation painted, 95th percentile", "ms",
                 of("turn, painting included", "p95"), "drawing the picture alone", of("drawing the same picture", "p95"), 5)


@row("Frames of the chat's socket, beside a bare Beast client")
def socket():
    of = google("chat_socket", in_turn)
    yield Figure("socket", "acknowledged frames a second", "1/s", column(of["kit/real_time"], "items_per_second"),
                 "bare Beast client", column(of["bare/real_time"], "items_per_second"), 0.8, "ratio", True)


@row("Calls to the backend over TLS, beside curl alone")
def calls():
    of = in_turns("calls")
    for delay in (0, 5, 20):
        what = f"a call that the server takes {delay} ms for"
        yield Figure("calls", what, "ms", of(what), "curl alone", of(what + ", curl alone"), 1.1, "ratio")
        beside = "curl on a thread of its own"
        yield Figure("calls", what, "ms", of(what), beside, of(f"{what}, {beside}"))
    what = "60 calls of 200 ms at once"
    yield Figure("calls", what, "ms", of(what), "curl alone", of(what + ", curl alone"), 1.1, "ratio")


@row("Reading answers of the backend into records")
def decoding():
    of = lambda name, benchmarks=google("decoding", times=5): column(benchmarks[name], "cpu_time")
    for what, name in ("150 messages", "Messages"), ("10,000 contacts", "Contacts"):
        yield Figure("decoding", what, "ms", of("decode" + name), "Qt's parse alone", of("parse" + name), 1.3, "ratio")
        yield Figure("decoding", what, "ms", of("decode" + name), "simdjson's parse alone", of("simdjson" + name))


@row("A keystroke in the search bar, beside a loop over names in lower case")
def search():
    of = lambda name, benchmarks=google("search", times=5): column(benchmarks[name], "cpu_time")
    for people in (1000, 10_000, 100_000):
        for place, found in enumerate(("most", "one in ten", "nobody")):
            yield Figure("search", f"{people:,} people, {found} found", "ms", of(f"keystroke/{people}/{place}"), "bare loop",
                         of(f"bareLoop/{people}/{place}"), 1.5, "ratio", size=people if place == 1 else None)


@row("The chat screen, beside a bare list view")
def chat():
    of = in_turns("chat_view")
    for messages in (150, 1500, 15_000):
        yield Figure("chat", f"opened with {messages:,} messages", "ms", of(f"opening a chat of {messages}"), "list view",
                     of(f"a list view of {messages}"), size=messages)
    shown = {messages: [opened - read for opened, read in zip(of(f"opening a chat of {messages}"), of(f"reading the records of {messages}"))]
             for messages in (150, 1500, 15_000)}
    for messages in (1500, 15_000):
        yield Figure("chat", f"of {messages:,}, without reading their records", "ms", shown[messages], "of 150", shown[150], 1.5, "ratio")
    yield Figure("chat", "socket's frame to its row painted", "ms", of("from the socket's frame to its row"), goal=16.7)
    yield Figure("chat", "a picture while scrolling, 99th percentile", "ms", of("a picture while scrolling", "p99"), "list view",
                 of("a picture of the list view while scrolling", "p99"), 16.7)


@row("The home screen, beside a bare list view")
def home():
    of = in_turns("home_view")
    yield Figure("home", "10,000 contacts shown", "ms", of("the contacts tab with 10000"), "list view",
                 of("a list view of 10000"), 16.7)
    yield Figure("home", "a picture while scrolling, 99th percentile", "ms", of("a picture while scrolling", "p99"), "list view",
                 of("a picture of the list view while scrolling", "p99"), 16.7)


@row("A host's start and memory, beside the same window without the kit")
def host():
    kinds = {"bare": [], "linked": [], "open": []}
    with tempfile.TemporaryDirectory() as folder:
        # A namespace without a network, and a home without settings.
        away = ["unshare", "--user", "--map-root-user", "--net"] if shutil.which("unshare") and subprocess.run(
            ["unshare", "--user", "--map-root-user", "--net", "true"], capture_output=True).returncode == 0 else []
        environment = os.environ | {"HOME": folder, "XDG_RUNTIME_DIR": folder}
        for _ in range(2 * turns + 1):
            for kind, values in kinds.items():
                command = in_turn(away + [PROGRAMS / f"host-{kind}", str(time.monotonic_ns())])
                values.append(json.loads(run(command, env=environment)))

    def of(kind, what, scale=1):
        return [each[what] / scale for each in kinds[kind][1:]]  # the first fills the caches
    for kind, name in ("linked", "linked"), ("open", "home screen opened at once"):
        yield Figure("host", f"first frame, {name}", "ms", of(kind, "firstFrameMs"), "without", of("bare", "firstFrameMs"), 15, "excess")
        yield Figure("host", f"resident memory, {name}", "MB", of(kind, "rssKiB", 976.6), "without", of("bare", "rssKiB", 976.6), 10, "excess")
        yield Figure("host", f"its own share of it (Pss), {name}", "MB", of(kind, "pssKiB", 976.6), "without", of("bare", "pssKiB", 976.6))
    yield Figure("host", "first frame with the home screen", "ms", of("open", "screenMs"), "without", of("bare", "firstFrameMs"))


@row("The library's size")
def size():
    library = PROJECT / "build/release/libVynlexTranslationSDK.so"
    with tempfile.TemporaryDirectory() as folder:
        stripped = Path(folder, "stripped.so")
        run(["strip", "-o", str(stripped), str(library)])
        yield Figure("size", "stripped", "MB", [stripped.stat().st_size / 1e6], goal=5)


@row("A second of sound converted to 16 kHz")
def conversion():
    of = google("conversion")
    for rate, hz in ("48_kHz", "48 kHz"), ("44_1_kHz", "44.1 kHz"):
        for other, name in ("soxr", "soxr HQ"), ("swresample", "libswresample"):
            kit, beside = f"conversion/kit_{rate}", f"conversion/{other}_{rate}"
            for what, unit, counter, goal in (
                    ("a second", "ms", "cpu_time", 10), ("loudest alias", "dB", "alias_dB", -90),
                    ("ripple to 7 kHz", "dB", "ripple_dB", 0.1), ("delay", "ms", "delay_ms", 6)):
                if beside in of:
                    yield Figure("conversion", f"{hz}: {what}", unit, column(of[kit], counter), name, column(of[beside], counter), goal)


# --- The tables


def spread(values):
    short = lambda value: f"{value:.3g}" if value < 1000 else f"{value:,.0f}"
    median, least, most = (short(value) for value in (statistics.median(values), min(values), max(values)))
    return median if least == most else f"{median} ({least} to {most})"


def as_markdown(measured, loads):
    lines = [f"Median of {turns} turns (least to most); load of the machine {loads[0]:.1f} before and {loads[-1]:.1f} after.", ""]
    for name, (title, _) in ROWS.items():
        rows = [figure for figure in measured if figure.row == name]
        if not rows:
            continue
        lines += [f"**{title}** (`scripts/bench {name}`)", "", "| | kit | beside | | ratio | goal | |", "|---|---|---|---|---|---|---|"]
        for each in rows:
            met = {None: "", True: "met", False: "**missed**"}[each.is_met()]
            beside = spread(each.beside) + " " + each.unit if each.beside else ""
            ratio = spread(each.ratios()) if each.ratios() else ""
            lines.append(f"| {each.what} | {spread(each.kit)} {each.unit} | {each.beside_what} | {beside} | {ratio} | {each.goal_text()} | {met} |")
        lines.append("")
    return "\n".join(lines)


def as_json(measured, loads):
    return {
        "turns": turns,
        "load": loads,
        "figures": [vars(each) | {"ratios": each.ratios(), "met": each.is_met()} for each in measured],
    }


def plot(name, script, out, height=700):
    head = f'set terminal pngcairo size 1200,{height} noenhanced\nset output "{out / (name + ".png")}"\n'
    subprocess.run(["gnuplot"], input=head + script, text=True, check=True)


def plot_ratios(measured, out):
    compared = [each for each in measured if each.ratios()]
    if not compared:
        return
    labels = [f"{each.row}: {each.what} / {each.beside_what}" for each in compared]
    data = "".join(
        f'"{label}" {min(r := each.ratios()):.4g} {statistics.median(r):.4g} {max(r):.4g}\n'
        for label, each in zip(reversed(labels), reversed(compared)))
    plot("ratios", f"""$data << end
{data}end
set title "The kit beside the nearest thing: 1 is as much as that (median, least, most)"
set logscale x
set yrange [-1:{len(compared)}]
set lmargin {max(map(len, labels))}
set arrow from 1,graph 0 to 1,graph 1 nohead lc rgb "gray"
set grid x
plot $data using 3:0:2:4:ytic(1) with xerrorbars pt 7 lc rgb "#0F3CC9" notitle
""", out, 140 + 22 * len(compared))


def plot_series(measured, name, title, out):
    series = [each for each in measured if each.row == name and each.size]
    if not series:
        return
    data = "".join(f"{each.size} {statistics.median(each.kit):.5g} {statistics.median(each.beside):.5g}\n" for each in series)
    plot(name, f"""$data << end
{data}end
set title "{title}"
set logscale xy
set xlabel "{'people' if name == 'search' else 'messages'}"
set ylabel "ms"
set grid
set key left top
plot $data using 1:2 with linespoints pt 7 lc rgb "#0F3CC9" title "kit", \\
     $data using 1:3 with linespoints pt 6 lc rgb "gray" title "{series[0].beside_what}"
""", out)


def main():
    global turns
    parser = argparse.ArgumentParser(prog="scripts/bench", description="Every benchmark beside the nearest thing that does the same.")
    parser.add_argument("rows", nargs="*", metavar="ROW", help=f"all unless named: {', '.join(ROWS)}")
    parser.add_argument("--out", type=Path, default=PROJECT / "build/bench", help="folder of the table and the pictures")
    parser.add_argument("--turns", type=int, default=turns, help="how often each is measured (%(default)s)")
    arguments = parser.parse_args()
    turns = arguments.turns
    if unknown := set(arguments.rows) - set(ROWS):
        parser.error(f"no such row: {', '.join(unknown)}")

    os.environ |= {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software", "LC_ALL": "C.UTF-8"}
    arguments.out.mkdir(parents=True, exist_ok=True)
    loads = [os.getloadavg()[0]]
    measured = []
    failed = False
    for name, (title, function) in ROWS.items():
        if arguments.rows and name not in arguments.rows:
            continue
        print(f"== {title}", file=sys.stderr)
        try:
            measured += function()
        except (RuntimeError, subprocess.CalledProcessError, FileNotFoundError, KeyError) as error:
            print(f"{name}: {error!r}", file=sys.stderr)
            failed = True
    loads.append(os.getloadavg()[0])

    table = as_markdown(measured, loads)
    (arguments.out / "table.md").write_text(table + "\n")
    (arguments.out / "table.json").write_text(json.dumps(as_json(measured, loads), indent=1) + "\n")
    plot_ratios(measured, arguments.out)
    plot_series(measured, "search", "A keystroke that finds one person in ten", arguments.out)
    plot_series(measured, "chat", "A chat opened, from the backend's answer to the picture", arguments.out)
    print(table)
    return 1 if failed else 0


sys.exit(main())
