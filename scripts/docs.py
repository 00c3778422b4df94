#!/usr/bin/python3
"""Makes the pages of `./dev docs`: one a family, from docs/families.json and from what is written elsewhere anyway.

    docs.py check XML              every exported name and every member of the headers has a text, and the table is right
    docs.py pictures RVXCV OUT     the pictures, made by the program
    docs.py pages XML OUT          the pages for doxygen: what they show beside the headers' own texts

A family is a group of the headers (@defgroup) that has functions. Its members and statuses come from the headers, its
cost from docs/performance.md, its examples from examples/families/GROUP.c and the programs and Python functions that the
table names. Run from the project's folder by scripts/docs.sh.
"""

import ast
import fnmatch
import html
import json
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as xml
from pathlib import Path

TABLE = Path("docs/families.json")
EXPORTS = Path("src/frame/exports.def")
PERFORMANCE = Path("docs/performance.md")
NAME = re.compile(r"rvxi(?P<operation>\w+?)_(?P<variant>(?:\d+[usf])+(?:_\w+)?)$")


def fail(complaints):
    """Ends the run if there are any."""
    for complaint in complaints:
        print(f"docs: {complaint}", file=sys.stderr)
    if complaints:
        sys.exit(1)


# ------------------------------------------------------------------------------------------- what the headers say


def text_of(element, *tags):
    return "".join("".join(part.itertext()) for tag in tags for part in element.findall(tag)).strip()


class Headers:
    """The groups, functions and statuses that doxygen found in the headers."""

    def __init__(self, folder):
        compounds = [xml.parse(path).getroot().find("compounddef") for path in sorted(Path(folder).glob("*.xml"))]
        self.compounds = [c for c in compounds if c is not None and c.get("kind") not in ("dir", "page")]
        self.groups = {c.findtext("compoundname"): c for c in self.compounds if c.get("kind") == "group"}
        by_id = {c.get("id"): name for name, c in self.groups.items()}
        self.parents = {by_id[inner.get("refid")]: name for name, c in self.groups.items() for inner in c.findall("innergroup")}

    def undocumented(self):
        for compound in self.compounds:
            where = compound.findtext("compoundname")
            for item in compound.iter():
                if item.tag in ("compounddef", "memberdef", "enumvalue"):
                    if not text_of(item, "briefdescription", "detaileddescription"):
                        yield f"{where}: {item.findtext('name') or item.get('kind')} has no text"

    def functions(self, group):
        """In the order of the header."""
        found = [m for m in self.groups[group].iter("memberdef") if m.get("kind") == "function"]
        return [m.findtext("name") for m in sorted(found, key=lambda m: int(m.find("location").get("line")))]

    def families(self):
        return [group for group in self.groups if self.functions(group)]

    def title(self, group):
        return self.groups[group].findtext("title")

    def brief(self, group):
        return re.sub(r"\s+", " ", text_of(self.groups[group], "briefdescription"))

    def header(self, group):
        return Path(self.groups[group].find(".//memberdef[@kind='function']/location").get("file")).name

    def statuses(self, group):
        """The statuses that the texts of a group name, or else those of the group around it: which group's, and names and
        meanings."""
        where = group
        values = {v.findtext("name"): text_of(v, "briefdescription") for v in self.groups["types"].iter("enumvalue")}
        named = set()
        while group and not named:
            named = set(re.findall(r"Status\w+", " ".join(self.groups[group].itertext()))) & set(values)
            named -= {"StatusOk"}
            where = group
            group = self.parents.get(group)
        return where, [(name, meaning) for name, meaning in values.items() if name in named]


def exported_names():
    return re.findall(r"^EXPORT\((\w+)\)", EXPORTS.read_text(), re.M)


def repeated_names():
    """doxygen joins the @name groups of one header that have the same name, and moves members to the first one's family."""
    for path in sorted(Path("include").rglob("*.h")):
        names = re.findall(r"@name (.*)", path.read_text())
        yield from (f"{path}: two groups have the name {name}" for name in sorted(set(names)) if names.count(name) > 1)


def check(folder):
    headers = Headers(folder)
    complaints = [*headers.undocumented(), *repeated_names()]
    documented = {name for group in headers.groups for name in headers.functions(group)}
    complaints += [f"{name} is exported, but no group of the headers has it" for name in exported_names() if name not in documented]
    fail(complaints + Families(headers).complaints)


# --------------------------------------------------------------------------------------------------- the table


class Costs:
    """The rows of docs/performance.md that say what a call costs: (row, 640x480, 1920x1080, unit)."""

    HEAD = "| Row | 640x480 | 1920x1080 | goal |"

    def __init__(self):
        self.rows = []
        unit = None
        paragraph = ""
        for line in PERFORMANCE.read_text().splitlines():
            if line == self.HEAD:
                unit = "ns a pixel" if "nanoseconds a pixel" in paragraph else "copies"
                paragraph = ""
            elif not line.startswith("|"):
                unit = None
                paragraph += " " + line.strip()
            elif unit and (row := re.match(r"\| `([^`]+)` \| *([\d.]+) *\| *([\d.]+) *\|", line)):
                self.rows.append((*row.groups(), unit))

    def of(self, functions, patterns):
        """The rows that are named after one of the functions, or like one of the patterns."""
        def belongs(row):
            member = re.match(r"\w*?_(?:\d+[usf])+_[A-Z0-9]+[A-Za-z]*?(?=_|\b)|\w+", row).group()
            return "rvxi" + member in functions or any(fnmatch.fnmatchcase(row, pattern) for pattern in patterns)
        return [row for row in self.rows if belongs(row[0])]


class Families:
    """docs/families.json, checked against the headers, the examples and the measured costs."""

    def __init__(self, headers):
        self.entries = json.loads(TABLE.read_text())["families"]
        known = headers.families()
        self.complaints = [f"{TABLE}: the headers have no family {group}" for group in self.entries if group not in known]
        self.complaints += [f"{TABLE}: the family {group} is missing" for group in known if group not in self.entries]
        costs = Costs()
        self.rows = {}
        for group in set(self.entries) & set(known):
            entry = self.entries[group]
            if ("picture" in entry) + ("output" in entry) + ("no_picture" in entry) != 1:
                self.complaints.append(f"{TABLE}: {group} needs a picture, an output or a reason why there is none")
            for name in entry.get("examples", []):
                if not Path(f"examples/{name}.c").exists():
                    self.complaints.append(f"{TABLE}: {group}: there is no examples/{name}.c")
            for pattern in entry.get("bench", []):
                if not costs.of((), [pattern]):
                    self.complaints.append(f"{TABLE}: {group}: no row of {PERFORMANCE} is like {pattern}")
            self.rows[group] = costs.of(headers.functions(group), entry.get("bench", []))
        claimed = {row for rows in self.rows.values() for row in rows}
        self.complaints += [f"{PERFORMANCE}: no family has the row {row[0]}" for row in costs.rows if row not in claimed]
        shown_examples = {f"examples/families/{group}.c" for group in self.entries}
        shown_examples |= {f"examples/{name}.c" for entry in self.entries.values() for name in entry.get("examples", [])}
        for path in sorted(Path("examples").rglob("*.c")):
            if str(path) not in shown_examples:
                self.complaints.append(f"{TABLE}: no family shows {path}")


# ------------------------------------------------------------------------------------------------- the pictures


class Pictures:
    """Runs the program for what docs/families.json asks. @NAME is a picture made before, @frames six of them."""

    def __init__(self, program, folder):
        self.program = Path(program).resolve()
        self.folder = Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)

    def words(self, command, out):
        for word in command:
            if word == "@frames":
                yield from (str(self.folder / f"street-{frame}.png") for frame in range(6))
            elif word == "@teach":
                yield from 5 * [str(self.folder / f"empty-{frame}.png") for frame in range(6)]
            elif word.startswith("@"):
                yield str(self.folder / f"{word[1:]}.png")
            else:
                yield word.replace("{out}", str(out)).replace("{folder}", str(self.folder))

    def run(self, command, out=""):
        words = [str(self.program), *self.words(command, out)]
        done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if done.returncode != 0:
            fail([f"{' '.join(words)}: {done.stdout}"])
        return done.stdout

    def scratches(self, name, width, height):
        """A mask of slanted scratches: white where the picture is lost."""
        row = lambda y: bytes(255 if (x - y // 3) % (width // 6) < 4 else 0 for x in range(width))
        (self.folder / f"{name}.png").with_suffix(".pgm").write_bytes(
            b"P5 %d %d 255\n" % (width, height) + b"".join(row(y) for y in range(height)))

    def make(self):
        table = json.loads(TABLE.read_text())
        self.scratches("scratches", 480, 360)
        for name, command in table["pictures"].items():
            self.run(command, self.folder / f"{name}.png")
        for group, entry in table["families"].items():
            if "from" in entry:
                self.run(entry["picture"], self.folder / group)
                shutil.copy(self.folder / group / entry["from"], self.folder / after(group, entry))
            elif "picture" in entry:
                self.run(entry["picture"], self.folder / after(group, entry))
            elif "output" in entry:
                (self.folder / f"{group}.txt").write_text(self.run(entry["output"]))


# ---------------------------------------------------------------------------------------------------- the pages


def after(group, entry):
    return group + entry.get("suffix", ".png")


def shown(command):
    """A command of the table as a user would type it."""
    words = " ".join(command).replace("{out}", "out.png").replace("{folder}/", "")
    words = words.replace("@frames", "street-*.png").replace("@teach", "empty-*.png")
    return "rvxcv " + re.sub(r"@([\w-]+)", r"\1.png", words).replace("--", "\\--")


def picture(group, entry):
    if "no_picture" in entry:
        return f"<p class=\"nopicture\">No picture: {entry['no_picture']}</p>\n"
    shots = []
    if "picture" in entry or "before" in entry:
        shots += [("before" if "picture" in entry else "of", f"{entry.get('before', 'street-0')}.png")]
    if "picture" in entry:
        shots += [(f"after: {entry['caption']}", after(group, entry))]
    lines = [f"<div><span class=\"label\">{label}</span>\n@image html {name}\n</div>" for label, name in shots]
    lines += [f"<div class=\"command\"><code>{shown(entry.get('picture') or entry['output'])}</code></div>"]
    if "output" in entry:
        lines += [f"@verbinclude {group}.txt"]
    # No empty line: it would end the block.
    return "<div class=\"pictures\">" + "\n".join(lines) + "</div>\n"


def members(headers, group):
    """Operations and their variants, each with a link."""
    rows = {}
    for name in headers.functions(group):
        match = NAME.match(name)
        operation, variant = (match["operation"], match["variant"]) if match else (name.removeprefix("rvxi"), "")
        rows.setdefault(operation, []).append((name, variant))
    table = "\n".join(
        f"| @ref {some[0][0]} \"{operation}\" | |" if not some[0][1]
        else f"| %{operation} | {', '.join(f'@ref {name} {chr(34)}{variant}{chr(34)}' for name, variant in some)} |"
        for operation, some in rows.items())
    count = sum(len(some) for some in rows.values())
    said = f"{count} functions, declared" if count > 1 else "One function, declared"
    return f"<h2>Members</h2>\n\n{said} in `{headers.header(group)}`.\n\n| Operation | Variants |\n|---|---|\n{table}\n"


def statuses(headers, group, like):
    where, named = headers.statuses(like)
    if not named:
        return ""
    order = "in the text" if where == group else f"in @ref {where} \"{headers.title(where)}\""
    rows = "\n".join(f"| #{name} | {meaning} |" for name, meaning in named)
    return f"<h2>Statuses</h2>\n\n#StatusOk, or one of these; in which order things are checked is told {order}.\n\n| Status | Meaning |\n|---|---|\n{rows}\n"


def cost(rows):
    text = ["<h2>Cost</h2>\n", "" if rows else "It has no row in [the table of costs](docs/performance.md)."]
    for unit, meaning in (("copies", "In copies of a 32f image of the same size"), ("ns a pixel", "In nanoseconds a pixel")):
        some = [row for row in rows if row[3] == unit]
        if some:
            text += [f"{meaning} ([how it was measured](docs/performance.md)):\n", "| Row | 640x480 | 1920x1080 |", "|---|---:|---:|"]
            text += [f"| `{name}` | {small} | {large} |" for name, small, large, _ in some]
            text += [""]
    return "\n".join(text)


class Python:
    """What python/ has to show: the Examples of the functions' docstrings, which doctest runs, and whole programs."""

    def __init__(self):
        self.examples = {}
        for path in sorted(Path("python/rvxcv").glob("*.py")):
            for item in ast.parse(path.read_text()).body:
                if isinstance(item, (ast.FunctionDef, ast.ClassDef)):
                    text = ast.get_docstring(item) or ""
                    found = re.search(r"^Examples\n-+\n(.*?)(?=\n\n\w[^\n]*\n---|\Z)", text, re.M | re.S)
                    if found:
                        self.examples[item.name] = f"```py\n{found[1].strip()}\n```"

    def example(self, name):
        program = Path("python/examples", f"{name}.py")
        if program.exists():
            return f"`{program}`\n\n@include {program}\n"
        return f"`rvxcv.{name}`\n\n{self.examples[name]}\n" if name in self.examples else None


def examples(group, entry, python):
    programs = [f"examples/{name}.c" for name in [f"families/{group}", *entry.get("examples", [])]]
    shown_c = [f"`{name}`\n\n@include {name}\n" for name in programs if Path(name).exists()]
    shown_python = [text for name in [group, *entry.get("python", [])] if (text := python.example(name))]
    text = ["<h2>Example in C</h2>\n", *shown_c] if shown_c else []
    return "\n".join(text + (["<h2>Example in Python</h2>\n", *shown_python] if shown_python else []))


def gallery(headers, families):
    """The page of all families: cards with the pictures that they make."""
    cards = ["/** @page families Families in pictures", "", "What the library does, family by family."]
    parent = ""
    for group, entry in families.entries.items():
        around = headers.parents.get(group, group)
        if around != parent:
            cards += ["</div>" if parent else "", f"<h2>{headers.title(around)}</h2>", "<div class=\"cards\">"]
            parent = around
        picture_of = [f"@image html {after(group, entry)}"] if "picture" in entry else ["<div class=\"blank\"></div>"]
        title = f"<div class=\"title\">@ref {group} \"{headers.title(group)}\"</div>"
        cards += ["<div class=\"card\">", *picture_of, title, f"<div class=\"brief\">{html.escape(headers.brief(group), quote=False)}</div></div>"]
    return "\n".join(cards + ["</div>", "*/"])


def pages(folder, out):
    headers = Headers(folder)
    families = Families(headers)
    fail(families.complaints)
    python = Python()
    out = Path(out)
    for part in ("before", "after"):
        (out / part).mkdir(parents=True, exist_ok=True)
    for group, entry in families.entries.items():
        parts = [members(headers, group), statuses(headers, group, entry.get("statuses_like", group)),
                 cost(families.rows[group]), examples(group, entry, python)]
        (out / "before" / f"{group}.dox").write_text(f"/** @addtogroup {group}\n\n{picture(group, entry)}\n*/\n")
        (out / "after" / f"{group}.dox").write_text(f"/** @addtogroup {group}\n\n{chr(10).join(parts)}\n*/\n")
    (out / "before" / "families.dox").write_text(gallery(headers, families))


def main():
    match sys.argv[1:]:
        case ["check", folder]:
            check(folder)
        case ["pictures", program, out]:
            Pictures(program, out).make()
        case ["pages", folder, out]:
            pages(folder, out)
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    main()
