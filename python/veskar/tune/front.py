# SPDX-License-Identifier: Apache-2.0
"""The Pareto front of a search with several objectives: a table, and the configurations of its trials."""

from __future__ import annotations

import contextlib
import csv
import io
import json
import os
import shutil

from .judgement import objectives
from .search import Search
from .settings import changed, write


def write_front(directory: str, search: Search) -> None:
    """Write front.csv, and front/TRIAL.json for each of its trials; none with one objective."""
    configurations = os.path.join(directory, "front")
    shutil.rmtree(configurations, ignore_errors=True)  # of an earlier answer, like the table
    if not search.study.objectives:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(os.path.join(directory, "front.csv"))
        return
    os.makedirs(configurations)
    for trial in search.front():
        write(os.path.join(configurations, f"{trial.number}.json"),
              json.dumps(changed(search.study.base, trial.params), indent=4) + "\n")
    write(os.path.join(directory, "front.csv"), front_csv(search))


def front_csv(search: Search) -> str:
    """A row for the baseline and each trial of the front: score, objectives and parameters."""
    file = io.StringIO()
    writer = csv.writer(file, lineterminator="\n")
    keys = [parameter.key for parameter in search.study.parameters]
    writer.writerow(["trial", "score", *search.study.objectives, *keys])
    writer.writerow(["baseline", *objectives(search.study, search.baseline), *("" for _ in keys)])
    for trial in search.front():
        writer.writerow([trial.number, *trial.values, *(trial.params[key] for key in keys)])
    return file.getvalue()


def front_rows(search: Search) -> list[tuple[str, list[float]]]:
    """The baseline and the trials of the front, with their score and objectives."""
    return [("baseline", objectives(search.study, search.baseline)),
            *((f"trial {trial.number}", trial.values) for trial in search.front())]


def front_lines(search: Search) -> list[str]:
    """The front as text, for a study of several objectives."""
    names = ["score", *search.study.objectives]
    rows = front_rows(search)
    return [f"Pareto front in training: {len(rows) - 1} settings, as front/TRIAL.json",
            " " * 14 + "".join(f"{name:>20}" for name in names),
            *(f"  {word:12}" + "".join(f"{value:20.4f}" for value in values) for word, values in rows)]
