"""The pages of the documentation, as the tests read them: fenced blocks, spans of code, tables and links."""

import os
import pathlib
import re
import shutil

SOURCE = pathlib.Path(__file__).resolve().parents[2]
PAGES = [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md")), SOURCE / "service/README.md"]
# Runs what the pages name in the middle of a sentence; nobody else reads it.
IN_THE_TEXT = SOURCE / "tests/docs/in-the-text.md"

FENCE = re.compile(r"^```([^\n]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SPAN = re.compile(r"`([^`]+)`")
LINK = re.compile(r"(?<!!)\[[^\]]+\]\(([^)\s]+)\)|(?:src|srcset)=\"([^\"]+)\"")
# Columns of tables that hold nothing but commands.
COLUMNS_OF_COMMANDS = ("command", "measured by")


def blocks(page):
    """The mark and the content of each fenced block."""
    return FENCE.findall(page.read_text())


def blocks_of_section(page, heading):
    """The same of the blocks between this heading and the next of its rank."""
    section = page.read_text().partition(f"\n## {heading}\n")[2]
    return FENCE.findall(section.partition("\n## ")[0] + "\n")


def prose(page):
    return FENCE.sub("", page.read_text())


def is_run(mark):
    return mark.split()[:2] == ["sh", "run"]


def commands_of(script):
    """Each command of a block by itself, without comments, redirections and what joins them."""
    script = re.sub(r"\\\n\s*", "", script)
    script = re.sub(r"<<(\w+)\n.*?^\1$", "", script, flags=re.MULTILINE | re.DOTALL)
    for line in script.splitlines():
        line = re.sub(r"(^|\s)#.*", "", line)
        for command in re.split(r"&&|\|\||[;|&](?!\d)|\$\(|`", line):
            command = re.sub(r"\s*\d?[<>]\s*\S+", "", command)
            command = re.sub(r"^\s*((!|if|until|while|do|then)\s+)*", "", command)
            if command := " ".join(command.split()):
                yield command


def programs_of_the_build():
    """What the project builds, whether this build has it or not."""
    lists = [*SOURCE.rglob("CMakeLists.txt")]
    declared = r"^\s*(?:add_executable|\w+_test|\w+_benchmark)\(([\w-]+)"
    return {name for file in lists if "build" not in file.relative_to(SOURCE).parts
            for name in re.findall(declared, file.read_text(), re.MULTILINE)}


def rows(page):
    """Each row of the page's tables, from the columns' headings to the cells."""
    heading = None
    for line in prose(page).splitlines():
        if not line.startswith("|"):
            heading = None
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if heading is None:
            heading = cells
        elif not re.fullmatch(r"[-:]+", cells[0]):
            yield dict(zip(heading, cells))


def columns(page):
    """The column's heading and the content of each cell of the page's tables."""
    for row in rows(page):
        yield from row.items()


def commands_in_the_text(page):
    """What a page tells its reader to run in the middle of a sentence or in a table."""
    ours = programs_of_the_build()
    for heading, cell in columns(page):
        if heading in COLUMNS_OF_COMMANDS:
            for span in SPAN.findall(cell):
                yield from commands_of(span)
    for span in SPAN.findall(prose(page)):
        words = span.split()
        path = SOURCE / words[0]
        is_script = words[0].startswith(("./", "tools/", "bench/")) and path.is_file() and os.access(path, os.X_OK)
        # A word by itself may be anything; what the project builds is always meant.
        is_known = words[0] in ours or len(words) > 1 and (words[0] in ("sudo", "systemctl") or shutil.which(words[0]))
        is_program = words[0].islower() and is_known
        # Tests are run as such.
        is_test = len(words) == 1 and (words[0].endswith("_tests") or words[0].startswith("tests/"))
        if (is_script or is_program) and not is_test:
            yield from commands_of(" ".join(words))
