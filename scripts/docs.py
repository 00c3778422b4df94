#!/usr/bin/python3
"""Makes the pages of `./dev docs`: one a family, from docs/families.json and from what is written elsewhere anyway.

    docs.py check XML             all that is exported or declared in the headers has a text, and the table is right
    docs.py pictures RVXCV OUT    the pictures, made by the program
    docs.py pages XML OUT         the pages for doxygen: what they show beside the headers' own texts

A family is a group of the headers (@defgroup) that has functions. Its members and statuses come from the headers, its
cost from docs/performance.md, its examples from examples/families/GROUP.c and the programs and Python functions that
the table names. scripts/docs.sh runs it in the project's folder.
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
        self.parents = {}
        for name, compound in self.groups.items():
            self.parents.update((by_id[inner.get("refid")], name) for inner in compound.findall("innergroup"))

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
        """The statuses that the texts of a group name, or else those of the group around it: that group, and each with
        its meaning."""
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
    """doxygen joins @name groups of one header that have the same name, even across families."""
    for path in sorted(Path("include").rglob("*.h")):
        names = re.findall(r"@name (.*)", path.read_text())
        yield from (f"{path}: two groups have the name {name}" for name in sorted(set(names)) if names.count(name) > 1)


def check(folder):
    headers = Headers(folder)
    complaints = [*headers.undocumented(), *repeated_names()]
    documented = {name for group in headers.groups for name in headers.functions(group)}
    missing = [name for name in exported_names() if name not in documented]
    complaints += [f"{name} is exported, but no group of the headers has it" for name in missing]
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
        self.complaints = [f"{TABLE}: the headers have no family {name}" for name in self.entries if name not in known]
        self.complaints += [f"{TABLE}: the family {name} is missing" for name in known if name not in self.entries]
        costs = Costs()
        programs = {str(path) for path in Path("examples").rglob("*.c")}
        self.rows = {}
        self.programs = {}
        for group in self.entries.keys() & set(known):
            entry = self.entries[group]
            if ("picture" in entry) + ("output" in entry) + ("no_picture" in entry) != 1:
                self.complaints.append(f"{TABLE}: {group} needs a picture, an output or a reason why there is none")
            for pattern in entry.get("bench", []):
                if not costs.of((), [pattern]):
                    self.complaints.append(f"{TABLE}: {group}: no row of {PERFORMANCE} is like {pattern}")
            self.rows[group] = costs.of(headers.functions(group), entry.get("bench", []))
            named = [f"examples/{name}.c" for name in entry.get("examples", [])]
            self.complaints += [f"{TABLE}: {group}: there is no {path}" for path in named if path not in programs]
            self.programs[group] = sorted({f"examples/families/{group}.c"} & programs) + named
            if not self.programs[group]:
                self.complaints.append(f"{TABLE}: {group} has no example: write examples/families/{group}.c")
        claimed = {row for rows in self.rows.values() for row in rows}
        unclaimed = [row[0] for row in costs.rows if row not in claimed]
        self.complaints += [f"{PERFORMANCE}: no family has the row {name}" for name in unclaimed]
        seen = {path for paths in self.programs.values() for path in paths}
        self.complaints += [f"{TABLE}: no family shows {path}" for path in sorted(programs - seen)]


# ------------------------------------------------------------------------------------------------- the pictures


class Pictures:
    """Runs the program for what docs/families.json asks. @NAME is a picture made before, @NAME-* a film's frames."""

    FRAMES = range(6)

    def __init__(self, program, folder):
        self.program = Path(program).resolve()
        self.folder = Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)

    def words(self, command, out):
        for word in command:
            if word.startswith("@") and word.endswith("-*"):
                yield from (str(self.folder / f"{word[1:-1]}{frame}.png") for frame in self.FRAMES)
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
        pixels = bytes(255 * ((x - y // 3) % (width // 6) < 4) for y in range(height) for x in range(width))
        (self.folder / f"{name}.pgm").write_bytes(b"P5 %d %d 255\n" % (width, height) + pixels)

    def make(self):
        table = json.loads(TABLE.read_text())
        self.scratches("scratches", 480, 360)
        for film, command in table["films"].items():
            for frame in self.FRAMES:
                self.run([*command, "--frame", str(frame)], self.folder / f"{film}-{frame}.png")
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


def shown(entry):
    """A command of the table as a user would type it."""
    out = "out" if "from" in entry else "out" + entry.get("suffix", ".png")
    words = " ".join(entry.get("picture") or entry["output"]).replace("{out}", out).replace("{folder}/", "")
    return "rvxcv " + re.sub(r"@([\w*-]+)", r"\1.png", words).replace("--", "\\--")


def picture(group, entry):
    if "no_picture" in entry:
        return f"<p class=\"nopicture\">No picture: {entry['no_picture']}</p>\n"
    shots = []
    if "picture" in entry or "before" in entry:
        shots += [("before" if "picture" in entry else "of this picture", f"{entry.get('before', 'street-0')}.png")]
    if "picture" in entry:
        shots += [(f"after: {entry['caption']}", after(group, entry))]
    lines = [f"<div><span class=\"label\">{label}</span>\n@image html {name}\n</div>" for label, name in shots]
    lines += [f"<div class=\"command\"><code>{shown(entry)}</code></div>"]
    if "output" in entry:
        lines += [f"@verbinclude {group}.txt"]
    # No empty line: it would end the block.
    return "<div class=\"pictures\">" + "\n".join(lines) + "</div>\n"


def table_of(head, rows):
    """A table; a head that ends with a colon is one of numbers."""
    rule = ["---:" if name.endswith(":") else "---" for name in head]
    lines = [[name.rstrip(":") for name in head], rule, *rows]
    return "".join("| " + " | ".join(cells) + " |\n" for cells in lines)


def members(headers, group):
    """Operations and their variants, each with a link."""
    operations = {}
    names = headers.functions(group)
    for name in names:
        match = NAME.match(name)
        operation, variant = match.group("operation", "variant") if match else (name.removeprefix("rvxi"), "")
        operations.setdefault(operation, []).append((name, variant))
    rows = []
    for operation, some in operations.items():
        links = ", ".join(f'@ref {name} "{variant}"' for name, variant in some if variant)
        rows.append([f"%{operation}" if links else f'@ref {some[0][0]} "{operation}"', links])
    said = f"{len(names)} functions, declared" if len(names) > 1 else "One function, declared"
    return f"<h2>Members</h2>\n\n{said} in `{headers.header(group)}`.\n\n" + table_of(["Operation", "Variants"], rows)


def statuses(headers, group, like):
    where, named = headers.statuses(like)
    if not named:
        return ""
    order = "in the text" if where == group else f'in @ref {where} "{headers.title(where)}"'
    said = f"#StatusOk, or one of these; in which order things are checked is told {order}."
    rows = [[f"#{name}", meaning] for name, meaning in named]
    return f"<h2>Statuses</h2>\n\n{said}\n\n" + table_of(["Status", "Meaning"], rows)


def cost(rows):
    text = ["<h2>Cost</h2>\n", "" if rows else "It has no row in [the table of costs](docs/performance.md)."]
    units = {"copies": "In copies of a 32f image of the same size", "ns a pixel": "In nanoseconds a pixel"}
    for unit, said in units.items():
        some = [[f"`{name}`", small, large] for name, small, large, its in rows if its == unit]
        if some:
            text += [f"{said} ([how it was measured](docs/performance.md)):\n"]
            text += [table_of(["Row", "640x480:", "1920x1080:"], some)]
    return "\n".join(text)


class Python:
    """What python/ has to show: the Examples in docstrings, which doctest runs, named MODULE.FUNCTION in the table; and
    programs, named like their files in python/examples."""

    PACKAGE = Path("python/rvxcv")

    def __init__(self):
        self.examples = {}
        for path in sorted(self.PACKAGE.glob("*.py")):
            for item in ast.parse(path.read_text()).body:
                if isinstance(item, (ast.FunctionDef, ast.ClassDef)):
                    text = ast.get_docstring(item) or ""
                    if found := re.search(r"^Examples\n-+\n(.*?)(?=\n\n\w[^\n]*\n---|\Z)", text, re.M | re.S):
                        code = f"`rvxcv.{item.name}`\n\n```py\n{found[1].strip()}\n```\n"
                        self.examples[f"{path.stem}.{item.name}"] = code

    def example(self, name):
        program = Path("python/examples", f"{name}.py")
        return f"`{program}`\n\n@include {program}\n" if program.exists() else self.examples.get(name)

    def missing(self, families):
        """What the table names and is not there, where the package has such a module at all."""
        for group, entry in families.entries.items():
            for name in entry.get("python", []):
                if (self.PACKAGE / f"{name.partition('.')[0]}.py").exists() and not self.example(name):
                    yield f"{TABLE}: {group}: there is no example of {name} in python/"


def examples(programs, entry, python):
    in_c = [f"`{path}`\n\n@include {path}\n" for path in programs]
    in_python = [text for name in entry.get("python", []) if (text := python.example(name))]
    parts = (("C", in_c), ("Python", in_python))
    return "\n".join(f"<h2>Example in {language}</h2>\n\n" + "\n".join(texts) for language, texts in parts if texts)


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
        title = f'<div class="title">@ref {group} "{headers.title(group)}"</div>'
        brief = f'<div class="brief">{html.escape(headers.brief(group), quote=False)}</div>'
        cards += ["<div class=\"card\">", *picture_of, title, brief, "</div>"]
    return "\n".join(cards + ["</div>", "*/"])


def pages(folder, out):
    headers = Headers(folder)
    families = Families(headers)
    python = Python()
    fail([*families.complaints, *python.missing(families)])
    out = Path(out)
    for part in ("before", "after"):
        (out / part).mkdir(parents=True, exist_ok=True)
    for group, entry in families.entries.items():
        parts = [members(headers, group), statuses(headers, group, entry.get("statuses_like", group)),
                 cost(families.rows[group]), examples(families.programs[group], entry, python)]
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
