# SPDX-License-Identifier: Apache-2.0
"""The report against the one of the program, which is in VESKAR_PROGRAM."""

import os
import subprocess

import pytest

import veskar


def test_report_equals_the_program(root, tmp_path):
    recording = veskar.simulate(root / "config/scenarios/perimeter.json", tmp_path / "scene.jsonl",
                                seed=7, duration=20.0)
    run = veskar.replay(recording, output=tmp_path / "fused.jsonl",
                        explanations=tmp_path / "why.jsonl")
    subprocess.run([os.environ["VESKAR_PROGRAM"], "report", recording.path, run.path, "--explain",
                    tmp_path / "why.jsonl", "-o", tmp_path / "program.html"], check=True)
    veskar.report(recording, run, path=tmp_path / "python.html")
    assert (tmp_path / "python.html").read_bytes() == (tmp_path / "program.html").read_bytes()
    with pytest.raises(ValueError, match="one or two runs"):
        veskar.report(recording, path=tmp_path / "none.html")
