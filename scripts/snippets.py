#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compiles or runs every fenced code block of documents: snippets.py PREFIX DOCUMENT...

PREFIX is where veskar is installed. What is done with a block depends on its language:

cpp      compiled and linked with warnings as errors, and compiled again behind
         `using namespace Veskar;`, which readers write. Its #include lines go to the top, the rest
         into main() or into a prelude.
sh       run by bash, which stops at the first command that fails. The blocks of a document run one
         after the other in one directory, beside the repository's config/, with veskar on the PATH.
python   run by Debian's Python with the installed package, in the directory of the document's sh
         blocks.
cmake    included by a prelude, a project that is configured, or run as a script.
json     parsed line by line (JSON Lines), or as one value over several lines.
text, mermaid
         not looked at. Any other language is an error.

A comment in front of a block, which no reader sees, says what the block needs:
<!-- snippet: WORD[=VALUE]... -->, values with spaces in quotes.

prelude=FILE  of docs/snippets; its line that holds nothing but "snippet" in a comment is replaced
              by the block, in a .cmake file ${SNIPPET} is the block's file
setup=COMMAND run by bash before the block
syntax=WHY    sh: not run (it installs, needs root or the network, or CI runs it elsewhere); bash
              reads it, and the scripts and presets that it names must exist
              python: compiled, but not run
script        cmake: run as a script, without a project
check=KIND    json: the block, behind its prelude, goes through `veskar check --as KIND`
schema=FILE   json: every line is valid by this JSON Schema of the repository
"""

import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

import jsonschema

ROOT = Path(__file__).resolve().parent.parent
FENCE = re.compile(r"^(\s*)```(.*)$")
MARK = re.compile(r"^\s*<!-- snippet: (.*) -->$")
PLACE = re.compile(r"^\s*(//|#) snippet$", re.MULTILINE)
WORDS = {
    "cpp": {"prelude"},
    "sh": {"setup", "syntax"},
    "python": {"syntax"},
    "cmake": {"prelude", "script"},
    "json": {"prelude", "check", "schema"},
}
IGNORED = {"text", "mermaid"}
MAIN = "int main() {\n// snippet\n}\n"


class Failure(Exception):
    pass


class Snippet:
    """A block with its place and the words of the comment before it."""

    def __init__(self, document, line, language, words, text):
        self.document = document
        self.line = line  # number of the block's first line
        self.language = language
        self.words = words
        self.text = text

    def padded(self):
        """The block with blank lines before it, so that line numbers match the document."""
        return "\n" * (self.line - 1) + self.text

    def prelude(self):
        name = self.words.get("prelude")
        return (ROOT / "docs/snippets" / name).read_text() if name else None


def words_of(comment):
    words = {}
    for word in shlex.split(comment):
        key, _, value = word.partition("=")
        words[key] = value or True
    return words


def snippets_of(document):
    lines = (ROOT / document).read_text().splitlines()
    start = None
    for number, line in enumerate(lines, 1):
        fence = FENCE.match(line)
        if start is None and fence:
            before = next((text for text in reversed(lines[: number - 1]) if text.strip()), "")
            mark = MARK.match(before)
            start = number + 1
            indentation = len(fence[1])
            language = fence[2].strip()
            words = words_of(mark[1]) if mark else {}
        elif fence:
            text = "".join(text[indentation:] + "\n" for text in lines[start - 1:number - 1])
            yield Snippet(document, start, language, words, text)
            start = None
    if start is not None:
        raise Failure(f"{document}:{start - 1}: this block does not end")


def run(command, **options):
    """Runs a command; shows its output only when it fails."""
    options.setdefault("timeout", 300)
    result = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options
    )
    if result.returncode != 0:
        raise Failure(f"{result.stdout}exit status {result.returncode}: {shlex.join(map(str, command))}")
    return result.stdout


class Checker:
    def __init__(self, prefix, scratch):
        self.scratch = scratch
        libraries = next(prefix.rglob("libveskar.so")).parent
        self.environment = dict(
            os.environ,
            PATH=f"{prefix / 'bin'}:{os.environ['PATH']}",
            LD_LIBRARY_PATH=str(libraries),
            PKG_CONFIG_PATH=str(libraries / "pkgconfig"),
            CMAKE_PREFIX_PATH=str(prefix),
            PYTHONPATH=str(prefix / "lib/python3/dist-packages"),
        )
        self.flags = self.run(
            "pkg-config", "--cflags", "--libs", "veskar-host", "glib-2.0"
        ).split()
        (scratch / "config").symlink_to(ROOT / "config")

    def run(self, *command):
        return run(command, cwd=self.scratch, env=self.environment)

    def check(self, snippet):
        unknown = set(snippet.words) - WORDS[snippet.language]
        if unknown:
            raise Failure(f"the comment before it says {', '.join(sorted(unknown))}")
        getattr(self, snippet.language)(snippet)

    def cpp(self, snippet):
        lines = snippet.text.splitlines()
        isInclude = [line.startswith("#include") for line in lines]
        here = f'#line {snippet.line} "{snippet.document}"\n'
        # Lines of the other kind are left blank, so that line numbers are kept.
        includes = here + "\n".join(t if i else "" for i, t in zip(isInclude, lines)) + "\n"
        code = here + "\n".join("" if i else t for i, t in zip(isInclude, lines)) + "\n"
        around = snippet.prelude() or MAIN
        if not PLACE.search(around):
            raise Failure('its prelude has no line "// snippet"')
        name = snippet.words.get("prelude", "main")
        for using, output in (("", ["-o", "snippet"]), ("using namespace Veskar;\n", ["-fsyntax-only"])):
            front = "#include <veskar/veskar.h>\n" + includes
            # Includes of the prelude come before `using namespace`, too.
            headers = "".join(re.findall(r"^#include.*\n", around, re.MULTILINE))
            body = PLACE.sub(lambda _: code, around)
            source = self.scratch / "snippet.cpp"
            source.write_text(f'{front}{headers}{using}#line 1 "docs/snippets/{name}"\n{body}')
            compiler = os.environ.get("CXX", "g++")
            warnings = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
            self.run(compiler, "-std=c++17", *warnings, source, *output, "-pthread", *self.flags)

    def sh(self, snippet):
        script = self.scratch / Path(snippet.document).name
        trap = f"""trap 'echo "{snippet.document}:$LINENO: $BASH_COMMAND" >&2' ERR; """
        script.write_text(snippet.padded())
        self.run("bash", "-n", script)
        if "syntax" in snippet.words:
            self.named_things_exist(snippet)
            return
        if "setup" in snippet.words:
            self.run("bash", "-euc", snippet.words["setup"])
        self.run("bash", "-Eeuo", "pipefail", "-c", f'{trap}. "{script}"')

    def python(self, snippet):
        script = self.scratch / (Path(snippet.document).name + ".py")
        script.write_text(snippet.padded())
        if "syntax" in snippet.words:
            self.run("/usr/bin/python3", "-m", "py_compile", script)
            return
        self.run("/usr/bin/python3", script)

    def named_things_exist(self, snippet):
        presets = json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]
        known = {preset["name"] for preset in presets}
        for script in re.findall(r"(?<!\S)(?:\./)?((?:scripts|\.ci)/[\w-]+)", snippet.text):
            if not (ROOT / script).is_file():
                raise Failure(f"there is no {script}")
        for preset in re.findall(r"--preset[ =]([\w-]+)", snippet.text):
            if preset not in known:
                raise Failure(f"there is no preset {preset}")

    def cmake(self, snippet):
        block = self.scratch / "documents" / snippet.document
        block.parent.mkdir(parents=True, exist_ok=True)
        block.write_text(snippet.padded())
        if "script" in snippet.words:
            self.run("cmake", "-P", block)
            return
        project = snippet.prelude()
        if project is None or "${SNIPPET}" not in project:
            raise Failure("it needs a prelude that includes ${SNIPPET}")
        with tempfile.TemporaryDirectory(dir=self.scratch) as directory:
            (Path(directory) / "CMakeLists.txt").write_text(project)
            self.run("cmake", "-S", directory, "-B", f"{directory}/build", f"-DSNIPPET={block}")
            self.run("cmake", "--build", f"{directory}/build")

    def json(self, snippet):
        try:
            values = [json.loads(line) for line in snippet.text.splitlines()]
        except json.JSONDecodeError:
            values = [self.whole_json(snippet)]
        lines = "".join(json.dumps(value) + "\n" for value in values)
        if "schema" in snippet.words:
            schema = json.loads((ROOT / snippet.words["schema"]).read_text())
            for offset, value in enumerate(values):
                try:
                    jsonschema.validate(value, schema)
                except jsonschema.ValidationError as error:
                    place = "/".join(map(str, error.absolute_path))
                    raise Failure(f"line {snippet.line + offset}: {place}: {error.message}")
        if "check" in snippet.words:
            document = self.scratch / "snippet.json"
            document.write_text((snippet.prelude() or "") + lines)
            self.run("veskar", "check", document, "--as", snippet.words["check"])

    @staticmethod
    def whole_json(snippet):
        try:
            return json.loads(snippet.text)
        except json.JSONDecodeError as error:
            raise Failure(f"line {snippet.line + error.lineno - 1}: {error.msg}")


def main(prefix, documents):
    counts = Counter()
    failures = 0
    for document in documents:
        with tempfile.TemporaryDirectory() as scratch:
            checker = Checker(Path(prefix).resolve(), Path(scratch))
            for snippet in snippets_of(document):
                if snippet.language in IGNORED:
                    counts["not looked at"] += 1
                    continue
                try:
                    if snippet.language not in WORDS:
                        raise Failure(f'"{snippet.language}" is no language that is known here')
                    checker.check(snippet)
                except (Failure, subprocess.TimeoutExpired) as failure:
                    failures += 1
                    print(f"{document}:{snippet.line}: {snippet.language} block: {failure}", file=sys.stderr)
                how = " (syntax)" if "syntax" in snippet.words else ""
                counts[snippet.language + how] += 1
    print("code blocks: " + ", ".join(f"{count} {kind}" for kind, count in sorted(counts.items())))
    print(f"{failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1], sys.argv[2:]))
    except Failure as failure:
        sys.exit(str(failure))
