# SPDX-License-Identifier: Apache-2.0
"""Optuna's plots of a search, as SVG for a page."""

from __future__ import annotations

import io
from collections.abc import Callable, Iterator
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from optuna.trial import FrozenTrial

    from .search import Search


def figures(search: Search) -> Iterator[tuple[str, str]]:
    """Titles and SVG elements: the history, the front by each objective, and a slice by each parameter.

    Raises
    ------
    ImportError
        without matplotlib
    """
    import matplotlib

    matplotlib.use("agg")
    from optuna.visualization import matplotlib as plots

    with matplotlib.rc_context():
        # The same search gives the same page, and its words are the page's text.
        matplotlib.rcParams.update({"svg.hashsalt": "veskar", "svg.fonttype": "none"})
        yield "The search", _svg(plots.plot_optimization_history(
            search.optuna, target=_value(0), target_name="score"))
        for place, metric in enumerate(search.study.objectives, 1):
            yield f"Score and {metric}", _svg(plots.plot_pareto_front(
                search.optuna, target_names=["score", f"mean {metric}"],
                targets=_values(0, place), constraints_func=_losses))
        for parameter in search.study.parameters:
            yield parameter.key, _svg(plots.plot_slice(
                search.optuna, params=[parameter.key], target=_value(0), target_name="score"))


def _value(place: int) -> Callable[[FrozenTrial], float]:
    return lambda trial: float(trial.values[place])


def _values(*places: int) -> Callable[[FrozenTrial], list[float]]:
    return lambda trial: [float(trial.values[place]) for place in places]


def _losses(trial: FrozenTrial) -> list[float]:
    return list(trial.user_attrs["losses"])


def _svg(axes: Any) -> str:
    from matplotlib import pyplot

    axes.set_title("")
    file = io.StringIO()
    axes.figure.savefig(file, format="svg", bbox_inches="tight", metadata={"Date": None})
    pyplot.close(axes.figure)
    text = file.getvalue()
    return text[text.index("<svg"):]
