"""Prints the coverage of each file of src/ and in total. Exits with 1 where a total is too low, or where
coverage_misses.txt gives a reason for code that is no longer there; with --reasons that alone is looked at.

A line or a branch counts as covered when any level and any instantiation of a template has run it. Conditions that the
compiler decides (if constexpr and the like) have no branches.
"""
import collections
import json
import os
import re
import sys

REASONS = os.path.join(os.path.dirname(__file__), "coverage_misses.txt")


def read_lines(path):
    """Of each file: line number -> how often it ran."""
    files, current = {}, None
    for record in open(path):
        if record.startswith("SF:"):
            current = files.setdefault(os.path.relpath(record[3:].strip()), collections.Counter())
        elif record.startswith("DA:"):
            line, count = record[3:].split(",")[:2]
            current[int(line)] += int(count)
    return files


def read_branches(path):
    """Of each file: position of a condition -> how often it was true and false."""
    files = {}
    for entry in json.load(open(path))["data"][0]["files"]:
        branches = files.setdefault(os.path.relpath(entry["filename"]), {})
        for line, column, end_line, end_column, taken, not_taken, *_ in entry["branches"]:
            counts = branches.setdefault((line, column, end_line, end_column), [0, 0])
            counts[0] += taken
            counts[1] += not_taken
    return files


def condition_text(source, position):
    line, column, end_line, end_column = position
    if line == end_line:
        return source[line - 1][column - 1:end_column - 1]
    return " ".join([source[line - 1][column - 1:], *source[line:end_line - 1], source[end_line - 1][:end_column - 1]])


def is_decided_by_compiler(source, position):
    """Conditions of constants: kNames, template arguments and sizes."""
    before = source[position[0] - 1][:position[1] - 1]
    if re.search(r"if constexpr \(", before) or re.search(r"if constexpr \($", source[position[0] - 2]):
        return True
    names = re.findall(r"[A-Za-z_]\w*", condition_text(source, position))
    return bool(names) and all(re.match(r"k[A-Z]|[A-Z]|std$|sizeof$|value$", name) for name in names)


def read_reasons(path):
    """(file, text of a line or condition) -> why the tests do not reach it."""
    reasons, reason = {}, ""
    for line in filter(None, map(str.strip, open(path))):
        if line.startswith("["):
            reason = line.strip("[]")
        elif not line.startswith("#"):
            reasons[tuple(line.split(": ", 1))] = reason
    return reasons


def vanished(reasons):
    """Entries whose text is no longer in their file."""
    def is_there(name, text):
        return os.path.exists(name) and text in " ".join(open(name).read().split())
    return [f"{name}: {text}" for name, text in reasons if not is_there(name, text)]


def reasons_stand():
    stale = vanished(read_reasons(REASONS))
    print("".join(f"{REASONS}: no longer there: {entry}\n" for entry in stale), end="")
    return not stale


def percent(covered, total):
    return 100.0 * covered / total if total else 100.0


def main(lines_path, branches_path, missed_path, least_lines, least_branches):
    all_lines, all_branches = read_lines(lines_path), read_branches(branches_path)
    totals, missed, reasons = [0, 0, 0, 0], [], read_reasons(REASONS)

    def miss(name, line, what, text):
        missed.append(f"{name}:{line}: {what}: {text} ({reasons.get((name, ' '.join(text.split())), 'no reason given')})")

    print(f"{'':44} {'lines':>15} {'branches':>18}")
    for name in sorted(filter(lambda name: name.startswith("src/"), all_lines)):
        source = open(name).read().split("\n")
        lines, branches = all_lines[name], []
        for position, counts in sorted(all_branches.get(name, {}).items()):
            if counts == [0, 0] and is_decided_by_compiler(source, position):
                continue
            branches += counts
            for way, count in zip(("true", "false"), counts):
                if count == 0:
                    miss(name, position[0], f"never {way}", condition_text(source, position))
        for number in sorted(number for number in lines if lines[number] == 0):
            miss(name, number, "never run", source[number - 1].strip())
        counts = [sum(c > 0 for c in lines.values()), len(lines), sum(c > 0 for c in branches), len(branches)]
        totals = [a + b for a, b in zip(totals, counts)]
        print(format_row(name, counts))
    print(format_row("total", totals))
    with open(missed_path, "w") as file:
        file.write("\n".join(missed) + "\n")
    enough = percent(*totals[:2]) >= float(least_lines) and percent(*totals[2:]) >= float(least_branches)
    print(f"{len(missed)} misses in {missed_path}; at least {least_lines} % of lines and {least_branches} % of branches "
          f"are asked for: {'met' if enough else 'not met'}")
    return 0 if enough and reasons_stand() else 1


def format_row(name, counts):
    lines, all_lines, branches, all_branches = counts
    return (f"{name:44} {lines:5}/{all_lines:<5}{percent(lines, all_lines):6.1f}%"
            f" {branches:5}/{all_branches:<5}{percent(branches, all_branches):6.1f}%")


if __name__ == "__main__":
    sys.exit(not reasons_stand() if sys.argv[1:] == ["--reasons"] else main(*sys.argv[1:]))
