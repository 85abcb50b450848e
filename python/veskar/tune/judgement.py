# SPDX-License-Identifier: Apache-2.0
"""Whether a setting is better than the baseline: paired differences with intervals of confidence."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Mapping
from statistics import fmean, variance
from typing import NamedTuple

from scipy.stats import t as student

from .study import Study

#: {name of sample: {metric: cost}}
Costs = Mapping[str, Mapping[str, float]]


class Difference(NamedTuple):
    """Cost of a candidate minus that of the baseline; below 0 the candidate is better."""

    baseline: float  #: mean cost
    candidate: float  #: mean cost
    low: float  #: the interval of confidence of the difference
    high: float

    @property
    def mean(self) -> float:
        return self.candidate - self.baseline


class Verdict(NamedTuple):
    """The judgement of a candidate."""

    score: Difference  #: of the weighted mean over the scenes
    scenes: dict[str, Difference]  #: {name: Difference}
    objectives: dict[str, Difference]  #: {metric: Difference}, of those beside the score
    faults: tuple[str, ...]  #: why the candidate is not recommended; empty: it is

    @property
    def accepted(self) -> bool:
        return not self.faults

    def parts(self) -> list[tuple[str, Difference]]:
        """What must not get worse, with its name."""
        return [*self.scenes.items(),
                *((f"mean {metric}", difference) for metric, difference in self.objectives.items())]


def means(study: Study, costs: Costs, metric: str | None = None) -> dict[str, float]:
    """{scene: mean cost} by a metric, or by the one of each scene."""
    return {scene.name: fmean(values[metric or scene.metric] for name, values in costs.items()
                              if _scene(name) == scene.name)
            for scene in study.scenes}


def objectives(study: Study, costs: Costs) -> list[float]:
    """What is minimised: the score, and the study's objectives, each the weighted mean over the scenes."""
    return [score(study, means(study, costs, metric)) for metric in (None, *study.objectives)]


def score(study: Study, scene_means: Mapping[str, float]) -> float:
    """The mean over the scenes by their weights."""
    return sum(scene.weight * scene_means[scene.name] for scene in study.scenes) / _total(study)


def losses(study: Study, baseline: Mapping[str, float],
           candidate: Mapping[str, float]) -> dict[str, float]:
    """{scene: loss beyond what is tolerated} of mean costs; above 0 a scene is too bad."""
    return {name: candidate[name] - limit(study, cost) for name, cost in baseline.items()}


def tolerated(lost: Iterable[float]) -> bool:
    """Whether losses beyond what is tolerated are none."""
    return all(loss <= 0.0 for loss in lost)


def limit(study: Study, cost: float) -> float:
    """The mean cost of a scene that is still tolerated, beside that of the baseline."""
    return cost * (1.0 + study.tolerance)


def judge(study: Study, baseline: Costs, candidate: Costs, confidence: float) -> Verdict:
    """Judge costs on held-out recordings.

    The score must be better with confidence, and every scene and every objective, with
    confidence, not worse than tolerated: one whose seeds cannot tell this counts as worse.

    Parameters
    ----------
    study : Study
    baseline, candidate : dict
        of the same samples
    confidence : float
        of the two-sided intervals of Student's t, as 0.95

    Returns
    -------
    Verdict
    """
    scenes, difference = _differences(study, baseline, candidate, None, confidence)
    further = {metric: _differences(study, baseline, candidate, metric, confidence)[1]
               for metric in study.objectives}
    verdict = Verdict(difference, scenes, further, ())
    return verdict._replace(faults=tuple(_faults(study, verdict)))


def _differences(study: Study, baseline: Costs, candidate: Costs, metric: str | None,
                 confidence: float) -> tuple[dict[str, Difference], Difference]:
    """Those of the scenes by a metric, or by the one of each scene, and that of their weighted mean."""
    baseline_means, candidate_means = means(study, baseline, metric), means(study, candidate, metric)
    squares = {}
    scenes = {}
    for scene in study.scenes:
        by = metric or scene.metric
        differences = [candidate[name][by] - costs[by] for name, costs in baseline.items()
                       if _scene(name) == scene.name]
        degrees = len(differences) - 1
        squares[scene.name] = (variance(differences) / len(differences), degrees)
        half = _quantile(confidence, degrees) * math.sqrt(squares[scene.name][0])
        mean = candidate_means[scene.name] - baseline_means[scene.name]
        scenes[scene.name] = Difference(baseline_means[scene.name], candidate_means[scene.name],
                                        mean - half, mean + half)
    return scenes, _mean_difference(study, baseline_means, candidate_means, squares, confidence)


def _mean_difference(study: Study, baseline: Mapping[str, float], candidate: Mapping[str, float],
                     squares: Mapping[str, tuple[float, int]], confidence: float) -> Difference:
    # Welch and Satterthwaite: scenes vary differently.
    parts = [((scene.weight / _total(study)) ** 2 * squares[scene.name][0], squares[scene.name][1])
             for scene in study.scenes]
    square = sum(part for part, _ in parts)
    degrees = square ** 2 / sum(part ** 2 / n for part, n in parts) if square > 0.0 else 1.0
    half = _quantile(confidence, degrees) * math.sqrt(square)
    before, after = score(study, baseline), score(study, candidate)
    return Difference(before, after, after - before - half, after - before + half)


def _faults(study: Study, verdict: Verdict) -> Iterator[str]:
    if not verdict.score.high < 0.0:
        yield (f"the score is not better with confidence: {verdict.score.mean:+.4f} "
               f"[{verdict.score.low:+.4f}, {verdict.score.high:+.4f}]")
    for name, part in verdict.parts():
        tolerated = limit(study, part.baseline) - part.baseline
        if part.high > tolerated:
            yield (f"{name} may get worse by more than {tolerated:.4f}: {part.mean:+.4f} "
                   f"[{part.low:+.4f}, {part.high:+.4f}]")


def _scene(sample: str) -> str:
    return sample.split("/", 1)[0]


def _total(study: Study) -> float:
    return math.fsum(scene.weight for scene in study.scenes)


def _quantile(confidence: float, degrees: float) -> float:
    return float(student.ppf(0.5 + confidence / 2.0, degrees))
