# SPDX-License-Identifier: Apache-2.0
"""The search itself: trials of Optuna, in a storage that outlives killed processes."""

from __future__ import annotations

import contextlib
import hashlib
import json
import os
import socket
import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from typing import Any, NamedTuple, Optional, cast

import optuna
from optuna.trial import FrozenTrial, Trial, TrialState

from .judgement import Costs, Verdict, judge, limit, losses, means, objectives, score, tolerated
from .samples import Job, Processes, Sample, Untold, cost, costs_of, digests_of
from .storage import Storage
from .study import Study, StudyError

#: Two-sided, of the judgement of all finalists together.
CONFIDENCE = 0.95

_COMPLETE = (TrialState.COMPLETE,)
_FINISHED = (TrialState.COMPLETE, TrialState.PRUNED)
_OPEN = (TrialState.WAITING, TrialState.RUNNING)

#: Pruning begins where the sampler begins to learn.
_STARTUP = 10


class _Result(NamedTuple):
    """What became of a trial."""

    means: dict[str, float]
    losses: list[float]
    values: list[float] | None  #: the score and the objectives; None when it was given up


#: Receives the number of finished trials and the best score so far, or None.
Progress = Callable[[int, Optional[float]], None]


class Search:
    """A study in a storage.

    Parameters
    ----------
    study : Study
    training : list of Sample
    processes : Processes
        evaluate the recordings of a trial
    storage : Storage
    function : callable, optional
        what a setting costs on a recording, instead of a replay and its evaluation
    """

    def __init__(self, study: Study, training: Sequence[Sample], processes: Processes, storage: Storage,
                 function: Callable[[Job], dict[str, float]] = cost) -> None:
        self.study, self.training = study, training
        self._processes, self._storage = processes, storage
        self._function = function
        self.digests = digests_of(training) if function is cost else {}
        with storage.alone():
            #: the trials, for Optuna's own functions
            self.optuna: optuna.Study = optuna.create_study(
                study_name=study.name, load_if_exists=True, storage=storage.trials,
                directions=["minimize"] * (1 + len(study.objectives)))
            self._claim()
        storage.retry_lost(self.optuna)
        self.optuna.sampler = optuna.samplers.TPESampler(
            # A search that goes on must not propose what it began with, nor a worker what others do.
            seed=None if storage.shared else study.seed + len(self.optuna.trials),
            constant_liar=storage.shared,
            constraints_func=lambda trial: list(trial.user_attrs["losses"]), n_startup_trials=_STARTUP)
        self.optuna.pruner = optuna.pruners.MedianPruner(_STARTUP, n_min_trials=_STARTUP)
        self.baseline = self._baseline()

    def _claim(self) -> None:
        """Refuse the trials of another study of that name."""
        searched = {key: value for key, value in self.study.document.items()
                    if key not in ("trials", "finalists", "prune")}
        base = ""
        if self.study.base is not None:
            with open(self.study.base, encoding="utf-8") as file:
                base = file.read()
        text = json.dumps([searched, base, self.digests], sort_keys=True)
        digest = hashlib.sha256(text.encode()).hexdigest()
        known = self.optuna.user_attrs.get("digest")
        if known is None:
            self.optuna.set_user_attr("digest", digest)
        elif known != digest:
            raise StudyError(f"{self.study.path}: the study, its configuration or its recordings have "
                             "changed since the first trial; give it another name or directory")

    def _baseline(self) -> Costs:
        costs: Costs | None = self.optuna.user_attrs.get("baseline")
        if costs is None:
            costs = self.costs(self.training, {})
            self.optuna.set_user_attr("baseline", costs)
        return costs

    def costs(self, samples: Sequence[Sample], changes: Mapping[str, Any]) -> Costs:
        """What changes to the base cost on recordings."""
        return costs_of(samples, self.study.base, changes, self._processes, self._function)

    def run(self, count: int, progress: Progress | None = None) -> None:
        """Search until the study has so many finished trials."""
        while self.finished < count:
            prune = self.study.prune and not self.study.objectives  # Optuna prunes by one only
            self._try(self._storage.ask(self.optuna), prune, progress)

    def try_all(self, settings: Sequence[Mapping[str, Any]], progress: Progress | None = None) -> None:
        """Try given settings instead of searching, each once, until they are done.

        Workers share them.
        """
        with self._storage.alone():
            tried = [trial.system_attrs["fixed_params"] for trial
                     in self.optuna.get_trials(deepcopy=False, states=_COMPLETE + _OPEN)]
            for setting in settings:
                if setting not in tried:
                    self.optuna.enqueue_trial(dict(setting))
        while self.optuna.get_trials(deepcopy=False, states=_OPEN):
            trial = self._storage.ask_waiting(self.optuna)
            if trial:
                self._try(trial, False, progress)
            else:
                time.sleep(0.5)  # others are trying the last ones

    def _try(self, trial: Trial, prune: bool, progress: Progress | None) -> None:
        try:
            with self._storage.held(trial):
                trial.set_user_attr("worker", f"{socket.gethostname()}:{os.getpid()}")
                changes = {parameter.key: parameter.suggest(trial) for parameter in self.study.parameters}
                result = self._result(trial, changes, prune)
        except BaseException:
            with contextlib.suppress(RuntimeError):
                self.optuna.tell(trial, state=TrialState.FAIL, skip_if_finished=True)
            raise
        # Optuna raises this when others have taken this process for dead meanwhile. The trial is
        # tried again then, and counts there.
        with contextlib.suppress(RuntimeError):
            trial.set_user_attr("means", result.means)
            trial.set_user_attr("losses", result.losses)
            state = None if result.values else TrialState.PRUNED
            self.optuna.tell(trial, result.values, state, skip_if_finished=True)
        if progress:
            best = self.feasible()
            progress(self.finished, best[0].values[0] if best else None)

    def _result(self, trial: Trial, changes: Mapping[str, Any], prune: bool) -> _Result:
        first, rest = first_and_rest(self.training) if prune else ([], self.training)
        try:
            costs = self.costs(first, changes)
            pruned = bool(first) and self._is_hopeless(trial, costs)
            if not pruned:
                costs = {**costs, **self.costs(rest, changes)}
        except Untold:
            # Hopeless, too: the baseline has a value.
            return _Result({}, [1.0] * len(self.study.scenes), None)
        found = means(self.study, costs)
        lost = losses(self.study, means(self.study, {name: self.baseline[name] for name in costs}), found)
        return _Result(found, list(lost.values()), None if pruned else objectives(self.study, costs))

    def _is_hopeless(self, trial: Trial, costs: Costs) -> bool:
        with contextlib.suppress(RuntimeError):  # as above
            trial.report(score(self.study, means(self.study, costs)), 0)
            return bool(trial.should_prune())
        return False

    @property
    def trials(self) -> list[FrozenTrial]:
        """The complete trials.

        Their values are the score and the study's objectives, their user attribute "means" is
        {scene: mean cost in training}.
        """
        found: list[FrozenTrial] = self.optuna.get_trials(deepcopy=False, states=_COMPLETE)
        return found

    @property
    def finished(self) -> int:
        """The number of complete trials and of those that were pruned."""
        return len(self.optuna.get_trials(deepcopy=False, states=_FINISHED))

    @property
    def pruned(self) -> int:
        """The number of trials that were given up after the first recordings."""
        return self.finished - len(self.trials)

    def feasible(self) -> list[FrozenTrial]:
        """The trials that are better than the baseline and make nothing worse than tolerated.

        The one with the best score is the first.
        """
        bound, *others = objectives(self.study, self.baseline)
        limits = [limit(self.study, cost) for cost in others]
        return [trial for trial in self._within_tolerance() if trial.values[0] < bound
                and all(value <= most for value, most in zip(trial.values[1:], limits))]

    def front(self) -> list[FrozenTrial]:
        """The Pareto front: trials that make no scene worse than tolerated, without those that
        another one betters in an objective and equals in the others.

        The one with the best score is the first.
        """
        trials = self._within_tolerance()
        return [trial for trial in trials if not any(_dominates(other, trial) for other in trials)]

    def _within_tolerance(self) -> list[FrozenTrial]:
        return sorted((trial for trial in self.trials if tolerated(trial.user_attrs["losses"])),
                      key=lambda trial: (trial.values[0], trial.number))

    def importances(self) -> dict[str, float] | None:
        """{key: share in the variation of the score}, the greatest first, by fANOVA.

        Empty when the score does not vary, or with one trial; None without scikit-learn.
        """
        try:
            evaluator = optuna.importance.FanovaImportanceEvaluator(seed=self.study.seed)
        except ImportError:
            return None
        if len({trial.values[0] for trial in self.trials}) < 2:
            return {}
        try:
            return dict(optuna.importance.get_param_importances(
                self.optuna, evaluator=evaluator, target=lambda trial: cast(float, trial.values[0])))
        except RuntimeError:  # no variance within the trees
            return {}

    def judge(self, held_out: Sequence[Sample]) -> Iterator[tuple[FrozenTrial, Verdict]]:
        """Judge the finalists on recordings that no trial has seen.

        Parameters
        ----------
        held_out : list of Sample

        Yields
        ------
        (optuna.trial.FrozenTrial, Verdict)
            in the order of the training score, up to the first that is accepted
        """
        finalists: list[FrozenTrial] = []
        for trial in self.feasible():
            if all(trial.params != other.params for other in finalists):
                finalists.append(trial)
        baseline = self.costs(held_out, {}) if finalists else {}
        # Bonferroni: each further finalist is another chance to pass by luck.
        confidence = 1.0 - (1.0 - CONFIDENCE) / self.study.finalists
        for trial in finalists[:self.study.finalists]:
            verdict = judge(self.study, baseline, self.costs(held_out, trial.params), confidence)
            yield trial, verdict
            if verdict.accepted:
                return


def _dominates(a: FrozenTrial, b: FrozenTrial) -> bool:
    return a.values != b.values and all(x <= y for x, y in zip(a.values, b.values))


def first_and_rest(samples: Sequence[Sample]) -> tuple[list[Sample], list[Sample]]:
    """A quarter of the recordings of each scene, at least one, and the others.

    Without others there would be nothing to save: none is first.
    """
    by_scene: dict[str, list[Sample]] = {}
    for sample in samples:
        by_scene.setdefault(sample.scene, []).append(sample)
    first = [sample for group in by_scene.values() for sample in group[:max(1, len(group) // 4)]]
    rest = [sample for sample in samples if sample not in first]
    return (first, rest) if rest else ([], list(samples))
