#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over all sources: scripts/lint.py UNITY_TREE SINGLE_TREE

UNITY_TREE compiles several sources together, so that each header is walked once for all of them.
A batch with findings is taken apart, with the compile commands of SINGLE_TREE. What clang-tidy looks
for in main files only, and so not in a batch, is looked for in the text. What passed is remembered,
like in a compiler cache, in ~/.cache/veskar-lint by the contents of all files read, command,
configuration and version.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
CACHE = pathlib.Path(os.environ.get("XDG_CACHE_HOME", pathlib.Path.home() / ".cache"), "veskar-lint")
DAYS_KEPT = 30
FOLDERS = ("src", "host", "live", "workbench", "python", "examples", "tests", "bench", "fuzz")

INCLUDED_SOURCE = re.compile(r'^#include "([^"]*\.(?:c|cc|cpp|cxx))"', re.MULTILINE)
# These look at what the main file declares and includes: a batch consists of nothing else.
MAIN_FILE_CHECKS = "-misc-unused-using-decls,-misc-unused-alias-decls,-bugprone-suspicious-include"
DECLARED_NAME = re.compile(r"^[ ]*(?:using [\w:]*\b\w+::(\w+);|namespace (\w+) = .*;)", re.MULTILINE)


def sources():
    listed = subprocess.run(["git", "ls-files", *(f"{folder}/*.cpp" for folder in FOLDERS),
                             ":!tests/consumer"], cwd=ROOT, check=True, capture_output=True, text=True)
    return [ROOT / name for name in listed.stdout.splitlines()]


def commands(tree):
    return {pathlib.Path(entry["file"]): entry
            for entry in json.loads((tree / "compile_commands.json").read_text())}


class Job:
    """One run of clang-tidy over a file, which is one source or includes several."""

    def __init__(self, entry, file, contents, checks, parts=()):
        self.parts = parts
        arguments = shlex.split(entry["command"])
        self.compiler = arguments[:arguments.index("-o")]
        self.directory = entry["directory"]
        self.file = file
        self.contents = contents
        folder = next(f for f in contents[0].parents if (f / ".clang-tidy").exists())
        self.command = ["clang-tidy", "--quiet", f"--config-file={folder / '.clang-tidy'}",
                        f"--checks={checks}", str(file), "--", *self.compiler[1:]]

    def name(self):
        return " ".join(str(source.relative_to(ROOT)) for source in self.contents)


def unity_jobs(tree, single_tree, wanted):
    """Jobs that cover all wanted sources, each once if possible."""
    missing = set(wanted)
    single = commands(single_tree)
    for file, entry in commands(tree).items():
        batch = file.is_relative_to(tree)
        compiled = map(pathlib.Path, INCLUDED_SOURCE.findall(file.read_text())) if batch else [file]
        # Excludes generated sources, and those in the batch of another target.
        contents = [source for source in compiled if source in missing]
        if not contents:
            continue
        missing.difference_update(contents)
        if batch:
            # With this file name the path-sensitive analysis covers included sources, which it
            # otherwise skips.
            file = file.with_name("UnifiedSource_" + file.name)
            file.write_text("".join(f'#include "{source}"\n' for source in contents))
        parts = [Job(single[source], source, [source], MAIN_FILE_CHECKS) for source in contents]
        yield Job(entry, file, contents, MAIN_FILE_CHECKS, parts if batch else ())
    if missing:
        sys.exit("compiled by no target: " + " ".join(sorted(map(str, missing))))


def main_file_faults(source):
    """What MAIN_FILE_CHECKS would find: names that are declared for nobody, sources as headers."""
    text = re.sub(r"//.*", "", source.read_text())
    faults = [f"{included} is a source" for included in INCLUDED_SOURCE.findall(text)]
    for declaration in DECLARED_NAME.finditer(text):
        name = declaration[1] or declaration[2]
        others = text[:declaration.start()] + text[declaration.end():]
        if not re.search(rf"\b{name}\b", others):
            faults.append(f"{name} is declared and not used")
    return "".join(f"{source.relative_to(ROOT)}: {fault}\n" for fault in faults)


class Cache:
    def __init__(self):
        CACHE.mkdir(parents=True, exist_ok=True)
        self.digests = {}
        self.version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True).stdout
        for entry in CACHE.iterdir():
            if time.time() - entry.stat().st_mtime > DAYS_KEPT * 86400:
                entry.unlink(missing_ok=True)

    def digest(self, path):
        """Digest of a file's text, independent of the path of the tree."""
        if path not in self.digests:
            text = pathlib.Path(path).read_bytes().replace(os.fsencode(ROOT), b".")
            self.digests[path] = hashlib.sha256(text).digest()
        return self.digests[path]

    def place(self, job):
        """The cache file of a job that passed; None when the source does not compile."""
        # All files that the source includes, with system headers, as a make rule.
        rule = subprocess.run([*job.compiler, "-M", str(job.file)], cwd=job.directory,
                              capture_output=True, text=True)
        if rule.returncode != 0:
            return None  # The linter will report the error.
        read = shlex.split(rule.stdout.replace("\\\n", " "))[1:]
        configuration = [str(folder / ".clang-tidy") for folder in job.contents[0].parents
                         if folder.is_relative_to(ROOT) and (folder / ".clang-tidy").exists()]
        key = hashlib.sha256(self.version)
        for argument in job.command:
            key.update(argument.replace(str(ROOT), ".").encode() + b"\0")
        for path in configuration + read:
            path = os.path.normpath(os.path.join(job.directory, path))
            key.update(path.replace(str(ROOT), ".").encode() + b"\0" + self.digest(path))
        return CACHE / key.hexdigest()


def run(job, cache):
    """The findings of the linter, and whether it was run, not cached."""
    place = cache.place(job)
    if place and place.exists():
        place.touch()
        return "", False
    result = subprocess.run(job.command, cwd=job.directory, capture_output=True, text=True)
    if place and result.returncode == 0 and not result.stdout.strip():
        place.touch()
        return "", True
    if job.parts:
        # The findings may come from colliding names in the batch: lints its sources one by one
        # instead.
        return "".join(run(part, cache)[0] for part in job.parts), True
    return f"{job.name()}\n{result.stdout}{result.stderr}", True


def main(unity_tree, single_tree):
    unity_tree, single_tree = (pathlib.Path(tree).resolve() for tree in (unity_tree, single_tree))
    wanted = sources()
    jobs = list(unity_jobs(unity_tree, single_tree, wanted))
    # The longest first, so that no core waits for one at the end.
    jobs.sort(key=lambda job: -len(job.contents))
    cache = Cache()
    asked = failed = 0
    for source in wanted:
        if faults := main_file_faults(source):
            failed += 1
            print(faults, end="", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said, new in pool.map(lambda job: run(job, cache), jobs):
            asked += new
            failed += bool(said)
            if said:
                print(said, flush=True)
    print(f"{len(wanted)} sources in {len(jobs)} runs of the linter, {len(jobs) - asked} remembered, "
          f"{failed} failed")
    return failed > 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
