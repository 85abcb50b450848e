# SPDX-License-Identifier: Apache-2.0
"""Whether a setting is better than the baseline: paired differences with intervals of confidence."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Mapping
from statistics import fmean, variance
from typing import NamedTuple

from scipy.stats import t as student

from .study import Study


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
    faults: tuple[str, ...]  #: why the candidate is not recommended; empty: it is

    @property
    def accepted(self) -> bool:
        return not self.faults


def means(study: Study, costs: Mapping[str, float]) -> dict[str, float]:
    """{scene: mean cost} of the costs by name of sample."""
    return {scene.name: fmean(value for name, value in costs.items() if _scene(name) == scene.name)
            for scene in study.scenes}


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


def judge(study: Study, baseline: Mapping[str, float], candidate: Mapping[str, float],
          confidence: float) -> Verdict:
    """Judge costs on held-out recordings.

    The score must be better with confidence, and every scene, with confidence, not worse than
    tolerated: a scene whose seeds cannot tell this counts as worse.

    Parameters
    ----------
    study : Study
    baseline, candidate : dict
        {name of sample: cost}, of the same samples
    confidence : float
        of the two-sided intervals of Student's t, as 0.95

    Returns
    -------
    Verdict
    """
    baseline_means, candidate_means = means(study, baseline), means(study, candidate)
    squares = {}
    scenes = {}
    for scene in study.scenes:
        differences = [candidate[name] - cost for name, cost in baseline.items()
                       if _scene(name) == scene.name]
        degrees = len(differences) - 1
        squares[scene.name] = (variance(differences) / len(differences), degrees)
        half = _quantile(confidence, degrees) * math.sqrt(squares[scene.name][0])
        mean = candidate_means[scene.name] - baseline_means[scene.name]
        scenes[scene.name] = Difference(baseline_means[scene.name], candidate_means[scene.name],
                                        mean - half, mean + half)
    difference = _score_difference(study, baseline_means, candidate_means, squares, confidence)
    verdict = Verdict(difference, scenes, ())
    return verdict._replace(faults=tuple(_faults(study, verdict)))


def _score_difference(study: Study, baseline: Mapping[str, float], candidate: Mapping[str, float],
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
    for name, scene in verdict.scenes.items():
        tolerated = limit(study, scene.baseline) - scene.baseline
        if scene.high > tolerated:
            yield (f"{name} may get worse by more than {tolerated:.4f}: {scene.mean:+.4f} "
                   f"[{scene.low:+.4f}, {scene.high:+.4f}]")


def _scene(sample: str) -> str:
    return sample.split("/", 1)[0]


def _total(study: Study) -> float:
    return math.fsum(scene.weight for scene in study.scenes)


def _quantile(confidence: float, degrees: float) -> float:
    return float(student.ppf(0.5 + confidence / 2.0, degrees))
