# SPDX-License-Identifier: Apache-2.0
"""The answer of a search in words: which parameters mattered, which way they moved, and what changed."""

from __future__ import annotations

import json
from collections.abc import Iterator, Mapping
from typing import TYPE_CHECKING, Any

from .judgement import Difference
from .settings import value_in
from .study import HIGHER_IS_BETTER

if TYPE_CHECKING:
    from .answer import Judged
    from .search import Search

#: Shares of the variation below this are noise of the forest rather than an effect.
_SLIGHT = 0.05


def importance_note(importances: Mapping[str, float] | None) -> str:
    """What the importances are, or why there are none."""
    if importances is None:
        return "Importances of the parameters need python3-sklearn."
    if not importances:
        return "The score does not depend on the parameters."
    return "Share of each parameter in the variation of the training score (fANOVA)."


def importance_lines(importances: Mapping[str, float] | None) -> list[str]:
    """The importances as a list, or why there is none."""
    return [importance_note(importances),
            *(f"  {share:6.1%}  {key}" for key, share in (importances or {}).items())]


def explain(search: Search, judged: Judged, importances: Mapping[str, float] | None) -> str:
    """The answer as sentences."""
    lines = list(_what_mattered(importances))
    if not judged:
        lines.append("No trial was better than the baseline without making a scene worse than tolerated.")
        return "\n".join(lines) + "\n"
    trial, verdict = judged[-1] if judged[-1][1].accepted else judged[0]
    kind = "recommended setting" if verdict.accepted else "best setting in training"
    lines += ["", f"Trial {trial.number}, the {kind}, against the baseline:"]
    shares = importances or {}
    for key in sorted(trial.params, key=lambda key: -shares.get(key, 0.0)):
        lines.append("  " + _movement(key, value_in(search.study.base, key), trial.params[key])
                     + (f" ({shares[key]:.0%})" if key in shares else ""))
    lines += ["", "On the held-out recordings:"]
    lines += [f"  {_change(scene.name, scene.metric, verdict.scenes[scene.name])}"
              for scene in search.study.scenes]
    lines += [f"  {_change('the mean', metric, difference)}" for metric, difference
              in verdict.objectives.items()]
    if not verdict.accepted:
        lines += ["", "It is not recommended:", *(f"  {fault}" for fault in verdict.faults)]
    return "\n".join(lines) + "\n"


def _what_mattered(importances: Mapping[str, float] | None) -> Iterator[str]:
    if not importances:
        yield from importance_lines(importances)
        return
    great = {key: share for key, share in importances.items() if share >= _SLIGHT}
    yield "The score in training depended on " + ", ".join(
        f"{key} ({share:.0%})" for key, share in great.items()) + "."
    slight = [key for key in importances if key not in great]
    if slight:
        yield f"It hardly depended on {', '.join(slight)} (less than {_SLIGHT:.0%} each)."


def _movement(key: str, before: Any, after: Any) -> str:
    if before == after:
        return f"{key} stays at {word(after)}"
    if isinstance(before, (bool, str)):
        verb = "changes"
    else:
        verb = "rises" if after > before else "falls"
    return f"{key} {verb} from {word(before)} to {word(after)}"


def _change(what: str, metric: str, difference: Difference) -> str:
    name = f"what {metric} lacks to 1" if metric in HIGHER_IS_BETTER else metric
    if difference.high < 0.0:
        verdict = "becomes better"
    elif difference.low > 0.0:
        verdict = "becomes worse"
    else:
        verdict = "does not change with confidence"
    share = f", {difference.mean / difference.baseline:+.0%}" if difference.baseline else ""
    return (f"{what} {verdict}: {name} from {difference.baseline:.4f} to "
            f"{difference.candidate:.4f}{share}")


def word(value: Any) -> str:
    """The value of a parameter as text."""
    return f"{value:.4g}" if isinstance(value, float) else json.dumps(value)
