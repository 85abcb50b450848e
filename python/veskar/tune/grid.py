# SPDX-License-Identifier: Apache-2.0
"""The cost over one or two parameters, the others as in the base: a table, without judgement."""

from __future__ import annotations

import csv
import dataclasses
import io
import itertools
import json
import os
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any

from .judgement import means, score, tolerated
from .settings import write
from .study import Parameter, Study, StudyError

if TYPE_CHECKING:
    from optuna.trial import FrozenTrial

    from .search import Search

#: {key: values} of the parameters of a grid, one or two
Axes = Mapping[str, Sequence[Any]]

#: Values of a range, when nothing else is said.
STEPS = 5


def read_axes(study: Study, words: Sequence[str]) -> dict[str, tuple[Any, ...]]:
    """The axes that the command line names.

    Parameters
    ----------
    study : Study
    words : list of str
        KEY or KEY=STEPS, of parameters of the study
    """
    parameters = {parameter.key: parameter for parameter in study.parameters}
    axes = {}
    for word in words:
        key, _, steps = word.partition("=")
        if key not in parameters:
            raise StudyError(f"--grid {key}: not a parameter of the study, which are "
                             + ", ".join(parameters))
        if steps and not (steps.isdecimal() and int(steps) > 1):
            raise StudyError(f"--grid {word}: {steps} is not a whole number from 2 on")
        if steps and parameters[key].choices is not None:
            raise StudyError(f"--grid {word}: the values of {key} are its choices")
        axes[key] = values_of(parameters[key], int(steps or STEPS))
    if len(axes) > 2 or len(axes) < len(words):
        raise StudyError("--grid: one parameter or two different ones are expected")
    return axes


def values_of(parameter: Parameter, steps: int) -> tuple[Any, ...]:
    """The choices of a parameter, or steps of its range including both ends."""
    if parameter.choices is not None:
        return parameter.choices
    low, high = parameter.low, parameter.high
    shares = [step / (steps - 1) for step in range(1, steps - 1)]
    inner = [low * (high / low) ** share if parameter.log else low + (high - low) * share for share in shares]
    if isinstance(low, int) and isinstance(high, int):
        inner = [round(value) for value in inner]
    return tuple(dict.fromkeys((low, *inner, high)))


def study_of(study: Study, axes: Axes) -> Study:
    """The study of a grid, whose trials are its own."""
    name = f"{study.name}: " + ", ".join(f"{key}={len(values)}" for key, values in axes.items())
    return dataclasses.replace(
        study, name=name, document={**study.document, "grid": {key: list(axes[key]) for key in axes}},
        parameters=tuple(parameter for parameter in study.parameters if parameter.key in axes))


def settings_of(axes: Axes) -> list[dict[str, Any]]:
    """All combinations."""
    return [dict(zip(axes, values)) for values in itertools.product(*axes.values())]


def write_grid(directory: str, search: Search, axes: Axes) -> str:
    """Write grid.csv and grid.txt; returns the text."""
    write(os.path.join(directory, "grid.csv"), grid_csv(search, axes))
    text = grid_table(search, axes)
    write(os.path.join(directory, "grid.txt"), text)
    return text


def grid_csv(search: Search, axes: Axes) -> str:
    """A row for each combination: its values, score, mean cost of each scene, whether it is tolerated."""
    cells = _cells(search)
    scenes = [scene.name for scene in search.study.scenes]
    file = io.StringIO()
    writer = csv.writer(file, lineterminator="\n")
    writer.writerow([*axes, "score", *search.study.objectives, *scenes, "tolerated"])
    for setting in settings_of(axes):
        trial = cells.get(_place(setting))
        if trial:
            found = trial.user_attrs["means"]
            writer.writerow([*map(_word, setting.values()), *trial.values,
                             *(found[scene] for scene in scenes),
                             _word(tolerated(trial.user_attrs["losses"]))])
    return file.getvalue()


def grid_table(search: Search, axes: Axes) -> str:
    """The scores as text: one parameter down, the other to the right."""
    cells = _cells(search)
    down, right = list(axes)[0], list(axes)[1:]

    def cell(setting: Mapping[str, Any]) -> str:
        trial = cells.get(_place(setting))
        if trial is None:
            return "-"
        best = trial.values[0] == min(other.values[0] for other in cells.values())
        kept = tolerated(trial.user_attrs["losses"])
        return f"{'*' if best else ''}{trial.values[0]:.4f}{' ' if kept else '!'}"

    columns: list[dict[str, Any]] = [{key: value} for key in right for value in axes[key]] or [{}]
    lines = [f"{search.study.name}: score in training; the baseline has "
             f"{score(search.study, means(search.study, search.baseline)):.4f}",
             f"Down: {down}" + (f"; right: {right[0]}" if right else ""), ""]
    if right:
        lines.append(" " * 12 + "".join(f"{_word(value):>11} " for value in axes[right[0]]))
    lines += [f"{_word(value):12}" + "".join(f"{cell({down: value, **column}):>12}" for column in columns)
              for value in axes[down]]
    lines += ["", "* the best score   ! a scene is worse than tolerated"]
    return "\n".join(line.rstrip() for line in lines) + "\n"


def _cells(search: Search) -> dict[tuple[Any, ...], FrozenTrial]:
    return {_place(trial.system_attrs["fixed_params"]): trial for trial in search.trials}


def _place(setting: Mapping[str, Any]) -> tuple[Any, ...]:
    return tuple(sorted(setting.items()))


def _word(value: Any) -> str:
    return f"{value:.6g}" if isinstance(value, float) else json.dumps(value).strip('"')
