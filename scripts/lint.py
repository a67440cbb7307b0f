#!/usr/bin/env python3
"""Static analysis with clang-tidy (.clang-tidy) and clazy (level 1) of every source file of a build.

Any finding fails. A file that was clean is not looked at again until something it is made of changes: the file itself,
a header it includes, its compile command, the rules, a tool. scripts/lint.sh is the way to call this.
"""

import argparse
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parent.parent

# States in one function that the analyzer looks at before it turns to the next function. Its own limit, 225000, takes about
# five times as long; the complete run keeps that.
QUICK_ANALYZER_NODES = 50000

# Headers precompiled by gcc, which the tools cannot read; what they hold comes with the sources' own includes.
PRECOMPILED = re.compile(r" -Winvalid-pch -include \S+/cmake_pch\.hxx")

FINDING = re.compile(r"\S.*: (warning|error): ")
SUMMARY = re.compile(r"\d+ (warning|error)|Suppressed \d+ warnings|Use -header-filter|Error while processing ")


class Unit:
    """One source file with the command that compiles it in one build."""

    def __init__(self, build, entry):
        self.build = build
        self.directory = entry["directory"]
        self.source = pathlib.Path(entry["file"])
        self.command = entry["command"]
        words = shlex.split(self.command)
        self.object = words[words.index("-o") + 1]

    @property
    def name(self):
        return str(self.source.relative_to(ROOT))


def without_precompiled(build):
    """A folder with the compile commands of the build, without headers that are precompiled."""
    folder = build / "lint"
    folder.mkdir(exist_ok=True)
    commands = (build / "compile_commands.json").read_text()
    (folder / "compile_commands.json").write_text(PRECOMPILED.sub("", commands))
    return folder


def units(builds, with_tests):
    """The source files of the builds, the largest first so that the last to end is a small one."""
    found = {}
    for build in builds:
        for entry in json.loads((build / "compile_commands.json").read_text()):
            unit = Unit(build, entry)
            is_generated = build in unit.source.parents
            is_test = (ROOT / "tests") in unit.source.parents
            if not is_generated and (with_tests or not is_test):
                found.setdefault(unit.source, unit)
    return sorted(found.values(), key=lambda unit: -unit.source.stat().st_size)


def dependencies(build):
    """What the last build found each object file to be made of; nothing for objects not built since they changed."""
    listing = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    made_of = {}
    for block in listing.split("\n\n"):
        head, _, files = block.partition("\n")
        target, _, state = head.partition(": ")
        if state.endswith("(VALID)"):
            made_of[target] = [build / line.strip() for line in files.splitlines()]
    return made_of


@functools.lru_cache(maxsize=None)
def digest(path):
    return hashlib.sha256(path.read_bytes()).digest()


class Linter:
    def __init__(self, builds, complete):
        self.commands = {build: without_precompiled(build) for build in builds}
        self.made_of = {build: dependencies(build) for build in builds}
        self.stamps = builds[0] / "lint" / ("complete" if complete else "quick")
        self.stamps.mkdir(parents=True, exist_ok=True)
        # Qt's logging macros are called without the arguments that strict C++17 asks for; benchmarks use attributes of gcc.
        words = ["-Wno-gnu-zero-variadic-macro-arguments", "-Wno-unknown-attributes"]
        if not complete:
            words += ["-Xclang", "-analyzer-config", "-Xclang", f"max-nodes={QUICK_ANALYZER_NODES}"]
        extra = [f"--extra-arg={word}" for word in words]
        self.tools = [
            ["clang-tidy", "--quiet", *extra],
            # clang-format has a blank after every comma, which Qt has to take out of the signature of each connect.
            [
                "clazy-standalone",
                "--checks=level1,no-connect-not-normalized",
                f"--header-filter={re.escape(str(ROOT))}/.*",
                *extra,
            ],
        ]
        self.rules = hashlib.sha256()
        self.rules.update((ROOT / ".clang-tidy").read_bytes())
        for tool in self.tools:
            self.rules.update(shlex.join(tool).encode())
            self.rules.update(subprocess.run([tool[0], "--version"], check=True, capture_output=True).stdout)

    def key(self, unit):
        """Tells all that the findings of the file depend on; nothing when that is not known."""
        made_of = self.made_of[unit.build].get(unit.object)
        if made_of is None:
            return None
        key = self.rules.copy()
        key.update(unit.command.encode())
        for path in made_of:
            key.update(digest(path.resolve()))
        return key.hexdigest()

    def findings(self, unit):
        """The findings in one file and its headers, one text each; none for a file known to be clean."""
        stamp = self.stamps / unit.name.replace("/", "-")
        key = self.key(unit)
        if key is not None and stamp.exists() and stamp.read_text() == key:
            return []
        found = []
        for tool in self.tools:
            command = [*tool, "-p", str(self.commands[unit.build]), str(unit.source)]
            run = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True)
            told = split_findings(run.stdout + run.stderr)
            if run.returncode != 0 and not told:
                told = [f"{unit.name}: {tool[0]} failed\n{run.stdout}{run.stderr}"]
            found += told
        if key is not None and not found:
            stamp.write_text(key)
        return found


def split_findings(output):
    """The findings in a tool's output, each with the lines that belong to it."""
    found = []
    for line in output.splitlines():
        if FINDING.match(line):
            found.append(line.replace(f"{ROOT}/", ""))
        elif found and not SUMMARY.match(line):
            found[-1] += "\n" + line
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    folder = lambda text: pathlib.Path(text).resolve()
    parser.add_argument("builds", nargs="+", type=folder, help="folders that were built")
    parser.add_argument("--all", action="store_true", help="the tests, too, and with the analyzer's full depth")
    options = parser.parse_args()

    started = time.monotonic()
    todo = units(options.builds, options.all)
    linter = Linter(options.builds, options.all)
    told = set()
    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for found in pool.map(linter.findings, todo):
            for finding in found:
                # A header's findings come with every file that includes it.
                if finding not in told:
                    told.add(finding)
                    print(finding, flush=True)
    print(f"lint: {len(todo)} files, {len(told)} findings, {time.monotonic() - started:.0f} s")
    return 1 if told or not todo else 0


if __name__ == "__main__":
    sys.exit(main())
