# SPDX-License-Identifier: Apache-2.0
"""Executes the notebooks; an error in a cell fails."""

import pathlib

import nbformat
import pytest
from nbclient import NotebookClient

NOTEBOOKS = sorted((pathlib.Path(__file__).parent.parent / "notebooks").glob("*.ipynb"))


def test_there_are_notebooks():
    assert len(NOTEBOOKS) == 3


@pytest.mark.parametrize("path", NOTEBOOKS, ids=lambda path: path.stem)
def test_runs(path):
    notebook = nbformat.read(path, as_version=4)
    nbformat.validate(notebook)
    assert all(not cell.get("outputs") for cell in notebook.cells), "saved with outputs"
    NotebookClient(notebook, timeout=120, kernel_name="python3",
                   resources={"metadata": {"path": str(path.parent)}}).execute()
    outputs = [output for cell in notebook.cells for output in cell.get("outputs", [])]
    assert any(output["output_type"] in ("execute_result", "display_data") for output in outputs)
