#!/usr/bin/env python3
"""Puts small faults into the sources, one at a time, at places chosen at random with a fixed seed, and sees whether the
tests notice.

The sources are copied to build/mutate and built there once, for quick compilation and with assertions (the flags of
the sanitized build without its sanitizers). A fault is a changed copy of one file that stands in front of it; only the
objects that include it are compiled, room by room, and linked with the others into a library, with which the room's
test program runs. A crash, a failed test or a program that does not end is a fault that was noticed.

Not counted are faults that do not compile, and faults that change no byte of any object (a survivor is compiled once
more as for release, before it is believed)."""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

import mutate_faults

PROJECT = pathlib.Path(__file__).resolve().parent.parent
WORK = PROJECT / "build/mutate"
TREE, BUILD, OUT = WORK / "tree", WORK / "build", PROJECT / "out/mutate"
LIBRARY, SONAME = "lib/librvxcvl9.so", "librvxcvl9.so.8"
INSIDERS = ("kernel_test", "frame_test")  # test programs that compile sources of the library into themselves
COMPILE_LIMIT = 600  # seconds
ADDRESS_SPACE = 1 << 40
NOTICED, SURVIVED, SAME, BROKEN = "noticed", "SURVIVED", "changes nothing", "does not compile"

Trial = collections.namedtuple("Trial", "file line kind old new fault")
Result = collections.namedtuple("Result", "verdict by")


def run(command, **options):
    return subprocess.run(command, check=True, text=True, **options)


def text_of(command, **options):
    return run(command, stdout=subprocess.PIPE, **options).stdout


def ends_within(command, limit, **options):
    """The exit status, or None if the command does not end in time: it and its children are ended then."""
    process = subprocess.Popen(
        command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, **options
    )
    try:
        return process.wait(limit)
    except subprocess.TimeoutExpired:
        return None
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


# ------------------------------------------------------------------------------------------------------ faults, chosen


def source_files(pattern):
    files = sorted(p for p in (TREE / "src").rglob("*") if p.suffix in (".cpp", ".h"))
    return [p for p in files if pattern in str(p.relative_to(TREE))]


def trials(seed, pattern):
    """An endless row of different faults: a line, a kind of fault that it can have, a place."""
    lines = []
    for path in source_files(pattern):
        text = path.read_text()
        lines += [(path, text, line, kinds) for line, kinds in sorted(mutate_faults.faults_by_line(text).items())]
    rng, seen, possible = random.Random(seed), set(), sum(len(f) for *_, kinds in lines for f in kinds.values())
    while len(seen) < possible:
        path, text, line, kinds = rng.choice(lines)
        kind = rng.choice(sorted(kinds))
        fault = rng.choice(kinds[kind])
        if (path, fault) in seen:
            continue
        seen.add((path, fault))
        begin = text.rfind("\n", 0, fault.start) + 1
        end = text.find("\n", fault.end)
        changed = text[begin : fault.start] + fault.text + text[fault.end : end]
        yield Trial(str(path.relative_to(TREE)), line, kind, text[begin:end].strip(), changed.strip(), fault)


# ---------------------------------------------------------------------------------------------- the build without fault


class Baseline:
    """The build without a fault: how every object is compiled, what includes what, and how long the test programs
    take. A test program is built, run and timed when a fault needs it for the first time."""

    def __init__(self, jobs):
        copy_tree()
        flags = [f"-DCMAKE_{language}_FLAGS_DEBUG=-O1 -w" for language in ("C", "CXX")]
        if shutil.which("ccache"):
            flags += [f"-DCMAKE_{language}_COMPILER_LAUNCHER=ccache" for language in ("C", "CXX")]
        run(
            ["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", *flags]
            + ["-DRVXCV_BUILD_TOOLS=OFF", "-DRVXCV_BUILD_BENCH=OFF"],
            stdout=subprocess.DEVNULL,
        )
        self.jobs, self.lock, self.seconds = jobs, threading.Lock(), {}
        tested = {path.parent.name for path in (TREE / "tests").glob("*/*_test.cpp")}
        self.programs = {f"{room}_test" for room in tested - {"core", "tools"}}
        self.build("rvxcvl9", *INSIDERS)
        self.commands = {}
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            self.commands[command[command.index("-o") + 1]] = command
        self.objects_of = {}  # by source or header
        item = None
        for line in text_of(["ninja", "-C", BUILD, "-t", "deps"]).splitlines():
            if line and not line.startswith(" "):
                item = line.split(":")[0]
            elif line.strip() and item in self.commands:
                path = os.path.normpath(BUILD / line.strip())  # ccache may have made it a relative one
                self.objects_of.setdefault(path, set()).add(item)
        self.links = {LIBRARY: self.link_command("rvxcvl9", LIBRARY)}
        for program in INSIDERS:
            self.links[f"bin/{program}"] = self.link_command(f"bin/{program}", f"bin/{program}")

    def build(self, *targets):
        run(["cmake", "--build", BUILD, "-j", str(self.jobs), "--target", *targets], stdout=sys.stderr)

    @staticmethod
    def link_command(target, output):
        for line in reversed(text_of(["ninja", "-C", BUILD, "-t", "commands", target]).splitlines()):
            command = [word for word in shlex.split(line) if word not in (":", "&&")]
            if "-o" in command and command[command.index("-o") + 1].startswith(output):
                return command
        raise SystemExit(f"no link command for {target}")

    def time_limit(self, program):
        with self.lock:
            if program not in self.seconds:
                self.build(program)
                begin = time.monotonic()
                if ends_within([BUILD / "bin" / program], COMPILE_LIMIT, cwd=WORK) != 0:
                    raise SystemExit(f"{program} fails without a fault")
                self.seconds[program] = time.monotonic() - begin
        return 30 + 10 * self.seconds[program]


def copy_tree():
    """The files as they are now; what is as it was keeps its time, so that little is built again."""
    listed = text_of(["git", "ls-files", "-z", "-co", "--exclude-standard"], cwd=PROJECT).split("\0")
    wanted = {name for name in listed if name and (PROJECT / name).is_file()}
    for name in wanted:
        copy = TREE / name
        if not copy.exists() or copy.read_bytes() != (PROJECT / name).read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(PROJECT / name, copy)
            os.utime(copy)
    for copy in [p for p in TREE.rglob("*") if p.is_file()]:
        if str(copy.relative_to(TREE)) not in wanted:
            copy.unlink()


def room_of(obj):
    """The room whose tests watch an object of the library; None for an object of a test program."""
    parts = obj.split(".dir/")
    if not parts[0].startswith("src/"):
        return None
    return "pyramid" if parts[1].startswith("filter/pyramid/") else parts[1].split("/")[0]


# ------------------------------------------------------------------------------------------------------ one fault tried


class Worker:
    """A place where one fault after the other is tried."""

    def __init__(self, number, baseline):
        self.baseline = baseline
        self.place = WORK / f"worker{number}"
        self.source = None
        self.check()

    def check(self):
        """A copy without a fault compiles to the same bytes, and test programs take the library that is made here."""
        for name in ("src/arith/abs_diff.cpp", "src/kernel/scratch.h"):
            self.put(name, (TREE / name).read_text())
            obj = min(o for o in self.baseline.objects_of[str(TREE / name)] if room_of(o) is not None)
            if not self.compile(obj) or self.differs(obj):
                raise SystemExit(f"{obj} is not what it was without any fault in {name}")
        self.link(LIBRARY, [])
        if str(self.place) not in text_of(["ldd", BUILD / "bin/frame_test"], env=self.environment()):
            raise SystemExit("test programs do not take the library with the fault")

    def put(self, name, text):
        shutil.rmtree(self.place, ignore_errors=True)
        for folder in ("lib", "bin", "run"):
            (self.place / folder).mkdir(parents=True)
        self.source = TREE / name
        path = self.place / name
        path.parent.mkdir(parents=True)
        path.write_text(text)

    def environment(self):
        return dict(os.environ, LD_LIBRARY_PATH=f"{self.place}/lib", GTEST_FAIL_FAST="1", GTEST_BRIEF="1")

    def compile(self, obj, *flags, source_root=None, output=None):
        command = list(self.baseline.commands[obj])
        root = source_root or self.place
        output = output or self.place / obj
        output.parent.mkdir(parents=True, exist_ok=True)
        command[command.index("-o") + 1] = str(output)
        if root != TREE and command[-1] == str(self.source):
            command[-1] = str(root / self.source.relative_to(TREE))
        first = next(i for i, word in enumerate(command) if word.startswith("-I"))
        command[first:first] = [f"-I{root}/src"]
        command[-2:-2] = [f"-ffile-prefix-map={root}={TREE}", *flags]
        return ends_within(command, COMPILE_LIMIT, cwd=BUILD) == 0

    def differs(self, obj):
        return (self.place / obj).read_bytes() != (BUILD / obj).read_bytes()

    def differs_in_release(self, obj):
        """As users get it: more optimised, without assertions."""
        outputs = [self.place / "release" / side / obj for side in ("without", "with")]
        compiled = [
            self.compile(obj, "-O3", "-DNDEBUG", source_root=root, output=output)
            for root, output in zip((TREE, self.place), outputs)
        ]
        return not all(compiled) or outputs[0].read_bytes() != outputs[1].read_bytes()

    def link(self, target, changed):
        """With the changed objects in front: of a function that several objects hold the linker takes the first."""
        command = list(self.baseline.links[target])
        at = command.index("-o") + 1
        command[at] = str(self.place / "lib" / SONAME if target == LIBRARY else self.place / target)
        objects = [word for word in command if word in self.baseline.commands]
        first = command.index(objects[0])
        rest = [word for word in command[first:] if word not in changed]
        return ends_within(command[:first] + [str(self.place / o) for o in changed] + rest, 600, cwd=BUILD) == 0

    def passes(self, program):
        limit = self.baseline.time_limit(program)
        own = self.place / "bin" / program
        command = ["prlimit", f"--as={ADDRESS_SPACE}", "--core=0", own if own.exists() else BUILD / "bin" / program]
        return ends_within(command, limit, cwd=self.place / "run", env=self.environment()) == 0

    def compiled_and_changed(self, objects):
        """The objects that the fault changes; None if one does not compile."""
        changed = []
        for obj in sorted(objects):
            if not self.compile(obj):
                return None
            if self.differs(obj):
                changed.append(obj)
        return changed

    def attempt(self, trial):
        text = (TREE / trial.file).read_text()
        self.put(trial.file, mutate_faults.applied(text, trial.fault))
        objects = self.baseline.objects_of.get(str(self.source), set())
        ran = set()

        for program in INSIDERS:
            own = [o for o in objects if room_of(o) is None and f"/{program}.dir/" in o]
            changed = self.compiled_and_changed(own)
            if changed is None:
                return Result(BROKEN, "")
            if changed:
                ran.add(program)
                if not self.link(f"bin/{program}", changed):
                    return Result(BROKEN, "")
                if not self.passes(program):
                    return Result(NOTICED, program)

        rooms = {}
        for obj in objects:
            if room := room_of(obj):
                rooms.setdefault(room, []).append(obj)
        everything = []
        for room in sorted(rooms, key=lambda room: len(rooms[room])):
            changed = self.compiled_and_changed(rooms[room])
            if changed is None:
                return Result(BROKEN, "")
            if not changed:
                continue
            everything = changed + everything
            if not self.link(LIBRARY, everything):
                return Result(BROKEN, "")
            # The frame's tests look at every room, and are quick.
            for program in dict.fromkeys(("frame_test", f"{room}_test")):
                if program not in self.baseline.programs:
                    continue
                ran.add(program)
                if not self.passes(program):
                    return Result(NOTICED, program)
        if not ran or (everything and not any(self.differs_in_release(obj) for obj in everything)):
            return Result(SAME, "")
        return Result(SURVIVED, " ".join(sorted(ran)))


# ----------------------------------------------------------------------------------------------------------- the report


class Report:
    """What was found, written after every fault: for people, and for --resume."""

    def __init__(self, title, wanted):
        self.title, self.wanted = title, wanted
        self.results = {}
        self.lock = threading.Lock()
        OUT.mkdir(parents=True, exist_ok=True)

    def resume(self):
        lines = (OUT / "state.jsonl").read_text().splitlines()
        if json.loads(lines[0]) != self.title:
            raise SystemExit("out/mutate/state.jsonl is of other sources, another seed or another filter: no --resume")
        for line in lines[1:]:
            number, *rest = json.loads(line)
            self.results[number] = (*rest[:-2], Result(*rest[-2:]))

    def start(self):
        (OUT / "state.jsonl").write_text(json.dumps(self.title) + "\n")

    def counted(self):
        """How many faults compile and change something."""
        return sum(row[-1].verdict in (NOTICED, SURVIVED) for row in self.results.values())

    def add(self, number, trial, result, seconds):
        with self.lock:
            row = (trial.file, trial.line, trial.kind, trial.old, trial.new)
            self.results[number] = (*row, result)
            with open(OUT / "state.jsonl", "a") as state:
                state.write(json.dumps([number, *row, *result]) + "\n")
            (OUT / "report.txt").write_text(self.text())
            place = f"{trial.file}:{trial.line}"
            print(f"{number:4} {result.verdict:16} {place}  {trial.kind}  ({seconds:.0f} s)", flush=True)

    def text(self):
        verdicts = collections.Counter(row[-1].verdict for row in self.results.values())
        counted = self.counted()
        lines = [
            f"Faults put into the sources: seed {self.title['seed']}, filter '{self.title['filter']}', "
            f"sources {self.title['sources']}",
            f"{len(self.results)} tried, {verdicts[BROKEN]} do not compile, {verdicts[SAME]} change nothing; of the "
            f"other {counted} (of {self.wanted} wanted) {verdicts[NOTICED]} noticed, {verdicts[SURVIVED]} survived",
        ]
        for verdict in (SURVIVED, NOTICED, SAME, BROKEN):
            lines += ["", f"== {verdict}: {verdicts[verdict]}"]
            for number, (file, line, kind, old, new, result) in sorted(self.results.items()):
                if result.verdict == verdict:
                    lines += [f"{number:4} {file}:{line}  {kind}  {result.by}", f"       - {old}", f"       + {new}"]
        return "\n".join(lines) + "\n"


def sources_hash():
    digest = hashlib.sha256()
    for path in source_files(""):
        digest.update(str(path.relative_to(TREE)).encode() + b"\0" + path.read_bytes())
    return digest.hexdigest()[:12]


def main():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.split("\n\n")[0])
    parser.add_argument("count", nargs="?", type=int, default=100, help="faults that compile and change something")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--filter", default="", help="only files with this in their path, as src/segment")
    parser.add_argument("--resume", action="store_true", help="go on where out/mutate/state.jsonl ends")
    parser.add_argument("--only", type=int, help="the one fault of this number, as a report numbers it")
    parser.add_argument("--list", action="store_true", help="tell the faults that would be tried first, try none")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="faults tried at a time")
    arguments = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    if arguments.list:
        copy_tree()
        for number, trial in zip(range(1, arguments.count + 1), trials(arguments.seed, arguments.filter)):
            print(f"{number:4} {trial.file}:{trial.line}  {trial.kind}\n     - {trial.old}\n     + {trial.new}")
        return
    baseline = Baseline(arguments.jobs)
    title = {"seed": arguments.seed, "filter": arguments.filter, "sources": sources_hash()}
    row = enumerate(trials(arguments.seed, arguments.filter), 1)
    if arguments.only:
        trial = next(trial for number, trial in row if number == arguments.only)
        print(f"{trial.file}:{trial.line}  {trial.kind}\n  - {trial.old}\n  + {trial.new}")
        print(*Worker(0, baseline).attempt(trial))
        return
    report = Report(title, arguments.count)
    if arguments.resume:
        report.resume()
    else:
        report.start()

    choice = threading.Lock()

    def work(number):
        worker = Worker(number, baseline)
        while True:
            with choice:
                if report.counted() >= arguments.count:
                    return
                number, trial = next(((n, t) for n, t in row if n not in report.results), (0, None))
            if trial is None:
                return
            begin = time.monotonic()
            report.add(number, trial, worker.attempt(trial), time.monotonic() - begin)

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for future in [pool.submit(work, number) for number in range(arguments.jobs)]:
            future.result()
    print("\n" + report.text().split("\n\n==")[0])


main()
