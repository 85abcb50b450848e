# SPDX-License-Identifier: Apache-2.0
"""The answer of a search: configuration, the sheet of where it came from, a table, and an explanation."""

from __future__ import annotations

import json
import os
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any, NamedTuple

import veskar

from .explanation import explain, importance_lines
from .front import front_lines, write_front
from .judgement import Verdict
from .page import write_page
from .samples import Sample, digests_of
from .settings import changed, key_in_file, write

if TYPE_CHECKING:
    from optuna.trial import FrozenTrial

    from .search import Search

    Judged = Sequence[tuple[FrozenTrial, Verdict]]


class Answer(NamedTuple):
    """What is printed."""

    recommended: bool  #: whether a setting is
    table: str
    explanation: str


def write_answer(directory: str, search: Search, held_out: Sequence[Sample], judged: Judged) -> Answer:
    """Write the files of the answer; without a recommended setting there is no best.json and no sheet.

    Parameters
    ----------
    directory : path
    search : Search
    held_out : list of Sample
    judged : list
        (trial, Verdict), as `Search.judge` yields them

    Returns
    -------
    Answer
    """
    importances = search.importances()
    recommended = bool(judged) and judged[-1][1].accepted
    answer = Answer(recommended, table(search, judged, importances), explain(search, judged, importances))
    write(os.path.join(directory, "table.txt"), answer.table)
    write(os.path.join(directory, "explanation.txt"), answer.explanation)
    write_front(directory, search)
    write_page(directory, search, judged, importances)
    paths = [os.path.join(directory, name) for name in ("best.json", "best.sheet.json")]
    if not recommended:
        for path in paths:  # of an earlier answer, which no longer holds
            if os.path.exists(path):
                os.unlink(path)
        return answer
    trial, verdict = judged[-1]
    documents = (changed(search.study.base, trial.params),
                 _sheet(search, held_out, trial, verdict, importances))
    for path, document in zip(paths, documents):
        write(path, json.dumps(document, indent=4) + "\n")
    return answer


def _sheet(search: Search, held_out: Sequence[Sample], trial: FrozenTrial,
           verdict: Verdict, importances: Mapping[str, float] | None) -> dict[str, Any]:
    study = search.study
    return {
        "study": study.document,
        "veskar": veskar.__version__,
        "trial": trial.number,
        "trials": search.finished,
        "pruned": search.pruned,
        "changes": {key_in_file(key): value for key, value in trial.params.items()},
        "importances": importances,
        "trainingScore": trial.values[0],
        "heldOutScore": verdict.score._asdict(),
        "heldOutScenes": {name: difference._asdict() for name, difference in verdict.scenes.items()},
        "heldOutObjectives": {name: difference._asdict() for name, difference in verdict.objectives.items()},
        "recordings": {"training": search.digests, "heldOut": digests_of(held_out)},
    }


def table(search: Search, judged: Judged, importances: Mapping[str, float] | None) -> str:
    """The finalists against the baseline, and the importances, as text."""
    lines = [f"{search.study.name}: {search.finished} trials, {search.pruned} of them pruned, "
             f"{len(search.feasible())} better in training and within the tolerance everywhere"]
    for trial, verdict in judged:
        lines += ["", f"Trial {trial.number} on held-out recordings: "
                  + ("recommended" if verdict.accepted else "not recommended"),
                  f"{'':24}{'baseline':>10}{'trial':>10}{'change':>10}  interval"]
        for name, difference in (*verdict.parts(), ("score", verdict.score)):
            lines.append(f"{name:24}{difference.baseline:10.4f}{difference.candidate:10.4f}"
                         f"{difference.mean:+10.4f}  [{difference.low:+.4f}, {difference.high:+.4f}]")
        lines += [f"  {fault}" for fault in verdict.faults]
        lines += [f"  {key} = {json.dumps(value)}" for key, value in trial.params.items()]
    if not judged:
        lines.append("No setting to judge: keep the baseline.")
    elif not judged[-1][1].accepted:
        lines += ["", "No setting is recommended: keep the baseline."]
    lines += ["", *importance_lines(importances)]
    if search.study.objectives:
        lines += ["", *front_lines(search)]
    return "\n".join(lines) + "\n"
