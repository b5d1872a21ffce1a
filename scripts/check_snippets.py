"""Holds the pages to what runs.

check_snippets.py PAGE.md...: every block of C or C++ has to stand, line for line, in a program of examples/, all of which
the tests build and run.
check_snippets.py --run TOOL PAGE.md...: also runs every command of the tool (build/vidproc ...) that stands in a block of
shell code, in a directory of its own where CLIP is a short clip.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
COMMAND = re.compile(r"^(?:.*\| )?build/vidproc (?:.*\\\n)*.*$", re.MULTILINE)
SECONDS = 60


def is_part(snippet, program):
    """Whether the lines of the snippet stand in the program, indented alike."""
    lines, wanted = program.split("\n"), textwrap.dedent(snippet).rstrip("\n")
    count = wanted.count("\n") + 1
    return any(
        textwrap.dedent("\n".join(lines[start : start + count])) == wanted for start in range(len(lines) - count + 1)
    )


def run(tool, commands):
    """Yields what fails of the commands, which may use what earlier ones have left."""
    with tempfile.TemporaryDirectory() as directory:
        work = pathlib.Path(directory)
        (work / "build").mkdir()
        (work / "build/vidproc").symlink_to(tool.resolve())
        clip = ["--synthetic", "--synthetic-size", "320x180", "--frames", "30", "-o", "clip.mkv"]
        subprocess.run([tool.resolve(), "pre", *clip], cwd=work, check=True, capture_output=True)
        (work / "clip.mkv").rename(work / "CLIP")
        for command in commands:
            shell = ["bash", "-o", "pipefail", "-c", command]
            result = subprocess.run(shell, cwd=work, capture_output=True, text=True, timeout=SECONDS, check=False)
            if result.returncode:
                yield f"{command}\n{result.stderr}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--run", metavar="TOOL", type=pathlib.Path)
    parser.add_argument("pages", metavar="PAGE.md", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    programs = [path.read_text(encoding="utf-8") for path in pathlib.Path("examples").glob("*.c*")]
    faults, snippets, commands = [], 0, []
    for page in arguments.pages:
        for language, block in BLOCK.findall(page.read_text(encoding="utf-8")):
            if language in ("c", "cpp"):
                snippets += 1
                if not any(is_part(block, program) for program in programs):
                    faults.append(f"{page}: not in examples/:\n{block}")
            elif language == "sh":
                commands += COMMAND.findall(block)
    if arguments.run:
        faults += run(arguments.run, commands)
    print(*faults, sep="\n", file=sys.stderr)
    ran = f", {len(commands)} commands run" if arguments.run else ""
    print(f"{snippets} programs and parts of them found in examples/{ran}; {len(faults)} faults")
    sys.exit(bool(faults))


main()
