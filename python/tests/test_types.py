# SPDX-License-Identifier: Apache-2.0
"""The types that editors and mypy are told, against the module and its examples."""

import json
import os
import pathlib
import re
import subprocess
import sys

import veskar

import stubs

TESTS = pathlib.Path(__file__).resolve().parent
PACKAGE = pathlib.Path(veskar.__file__).parent


def run(*arguments, directory):
    # Beside no tree of sources, whose package has no compiled module.
    done = subprocess.run(
        [sys.executable, "-m", *map(str, arguments)], cwd=directory, capture_output=True, text=True,
        env={**os.environ, "MYPYPATH": str(PACKAGE.parent), "MYPY_CACHE_DIR": str(directory / "cache")})
    return done.returncode, done.stdout + done.stderr


def mypy(directory, *arguments):
    return run("mypy", "--config-file", TESTS / "mypy.ini", *arguments, directory=directory)


def test_the_stub_is_what_the_module_says():
    assert (PACKAGE / "_veskar.pyi").read_text() == "\n".join(stubs.stub()) + "\n", (
        "python/tests/stubs.py writes it anew")


def test_stubs_agree_with_the_module(tmp_path):
    status, said = run("mypy.stubtest", "veskar", "--mypy-config-file", TESTS / "mypy.ini",
                       "--allowlist", TESTS / "stubtest.allow", directory=tmp_path)
    assert status == 0, said


def test_the_package_is_typed_strictly(tmp_path):
    status, said = mypy(tmp_path, "-p", "veskar")
    assert status == 0, said


def examples():
    """The code of the notebooks and of the documentation, by name."""
    for path in sorted((TESTS.parent / "notebooks").glob("*.ipynb")):
        cells = json.loads(path.read_text())["cells"]
        yield path.stem, "\n".join("".join(cell["source"]) for cell in cells
                                   if cell["cell_type"] == "code")
    document = (TESTS.parents[1] / "docs/python.md").read_text()
    for number, block in enumerate(re.findall(r"^```python\n(.*?)^```", document, re.M | re.S)):
        yield f"block{number}", block


def test_examples_have_the_types_that_are_told(tmp_path):
    for name, code in examples():
        (tmp_path / f"{name}.py").write_text(code)
    files = sorted(tmp_path.glob("*.py"))
    assert len(files) >= 9
    status, said = mypy(tmp_path, "--allow-untyped-defs", "--allow-untyped-calls", *files)
    assert status == 0, said


def test_wrong_types_are_found(tmp_path):
    (tmp_path / "wrong.py").write_text(
        "import veskar\n"
        'veskar.Config.defaults().module.gatingDistance = "wide"\n'
        'veskar.replay("a.jsonl", taggs=True)\n'
        "veskar.FusionModule(veskar.Config.defaults()).cycle(1, 0.0, [])\n"
        "veskar.metrics.gospa([[0.0, 0.0]], [[0.0, 0.0]]).missed\n")
    status, said = mypy(tmp_path, tmp_path / "wrong.py")
    assert status == 1
    assert [int(line.split(":")[1]) for line in said.splitlines()[:-1] if "error" in line] == [2, 3, 4, 5]
