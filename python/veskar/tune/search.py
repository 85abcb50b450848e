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
from typing import Any, Optional

import optuna
from optuna.trial import FrozenTrial, Trial, TrialState

from .judgement import Verdict, judge, losses, means, score, tolerated
from .samples import Processes, Sample, cost, costs_of, digests_of
from .storage import Storage
from .study import Study, StudyError

#: Two-sided, of the judgement of all finalists together.
CONFIDENCE = 0.95

_COMPLETE = (TrialState.COMPLETE,)
_FINISHED = (TrialState.COMPLETE, TrialState.PRUNED)
_OPEN = (TrialState.WAITING, TrialState.RUNNING)

#: Pruning begins where the sampler begins to learn.
_STARTUP = 10

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
        the cost of (base, changes, sample), instead of a replay and its evaluation
    """

    def __init__(self, study: Study, training: Sequence[Sample], processes: Processes, storage: Storage,
                 function: Callable[[tuple[str | None, Mapping[str, Any], Sample]], float] = cost,
                 ) -> None:
        self.study, self.training = study, training
        self._processes, self._storage = processes, storage
        self._function = function
        self.digests = digests_of(training) if function is cost else {}
        with storage.alone():
            self._trials = optuna.create_study(
                study_name=study.name, load_if_exists=True, direction="minimize",
                storage=storage.trials)
            self._claim()
        storage.retry_lost(self._trials)
        self._trials.sampler = optuna.samplers.TPESampler(
            # A search that goes on must not propose what it began with, nor a worker what others do.
            seed=None if storage.shared else study.seed + len(self._trials.trials),
            constant_liar=storage.shared,
            constraints_func=lambda trial: list(trial.user_attrs["losses"]), n_startup_trials=_STARTUP)
        self._trials.pruner = optuna.pruners.MedianPruner(_STARTUP, n_min_trials=_STARTUP)
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
        known = self._trials.user_attrs.get("digest")
        if known is None:
            self._trials.set_user_attr("digest", digest)
        elif known != digest:
            raise StudyError(f"{self.study.path}: the study, its configuration or its recordings have "
                             "changed since the first trial; give it another name or directory")

    def _baseline(self) -> dict[str, float]:
        costs: dict[str, float] | None = self._trials.user_attrs.get("baseline")
        if costs is None:
            costs = self.costs(self.training, {})
            self._trials.set_user_attr("baseline", costs)
        return costs

    def costs(self, samples: Sequence[Sample], changes: Mapping[str, Any]) -> dict[str, float]:
        """{name: cost} of changes to the base."""
        return costs_of(samples, self.study.base, changes, self._processes, self._function)

    def run(self, count: int, progress: Progress | None = None) -> None:
        """Search until the study has so many finished trials."""
        while self.finished < count:
            self._try(self._storage.ask(self._trials), self.study.prune, progress)

    def try_all(self, settings: Sequence[Mapping[str, Any]], progress: Progress | None = None) -> None:
        """Try given settings instead of searching, each once, until they are done.

        Workers share them.
        """
        with self._storage.alone():
            tried = [trial.system_attrs["fixed_params"] for trial
                     in self._trials.get_trials(deepcopy=False, states=_COMPLETE + _OPEN)]
            for setting in settings:
                if setting not in tried:
                    self._trials.enqueue_trial(dict(setting))
        while self._trials.get_trials(deepcopy=False, states=_OPEN):
            trial = self._storage.ask_waiting(self._trials)
            if trial:
                self._try(trial, False, progress)
            else:
                time.sleep(0.5)  # others are trying the last ones

    def _try(self, trial: Trial, prune: bool, progress: Progress | None) -> None:
        try:
            with self._storage.held(trial):
                trial.set_user_attr("worker", f"{socket.gethostname()}:{os.getpid()}")
                changes = {parameter.key: parameter.suggest(trial) for parameter in self.study.parameters}
                first, rest = first_and_rest(self.training) if prune else ([], self.training)
                costs = self.costs(first, changes)
                pruned = bool(first) and self._is_hopeless(trial, costs)
                if not pruned:
                    costs.update(self.costs(rest, changes))
        except BaseException:
            with contextlib.suppress(RuntimeError):
                self._trials.tell(trial, state=TrialState.FAIL, skip_if_finished=True)
            raise
        found = means(self.study, costs)
        lost = losses(self.study, means(self.study, {name: self.baseline[name] for name in costs}), found)
        # Optuna raises this when others have taken this process for dead meanwhile. The trial is
        # tried again then, and counts there.
        with contextlib.suppress(RuntimeError):
            trial.set_user_attr("means", found)
            trial.set_user_attr("losses", list(lost.values()))
            if pruned:
                self._trials.tell(trial, state=TrialState.PRUNED, skip_if_finished=True)
            else:
                self._trials.tell(trial, score(self.study, found), skip_if_finished=True)
        if progress:
            best = self.feasible()
            progress(self.finished, best[0].value if best else None)

    def _is_hopeless(self, trial: Trial, costs: Mapping[str, float]) -> bool:
        with contextlib.suppress(RuntimeError):  # as above
            trial.report(score(self.study, means(self.study, costs)), 0)
            return bool(trial.should_prune())
        return False

    @property
    def trials(self) -> list[FrozenTrial]:
        """The complete trials.

        Their user attribute "means" is {scene: mean cost in training}.
        """
        found: list[FrozenTrial] = self._trials.get_trials(deepcopy=False, states=_COMPLETE)
        return found

    @property
    def finished(self) -> int:
        """The number of complete trials and of those that were pruned."""
        return len(self._trials.get_trials(deepcopy=False, states=_FINISHED))

    @property
    def pruned(self) -> int:
        """The number of trials that were given up after the first recordings."""
        return self.finished - len(self.trials)

    def feasible(self) -> list[FrozenTrial]:
        """The trials that are better than the baseline and make no scene worse than tolerated.

        The best one is the first.
        """
        bound = score(self.study, means(self.study, self.baseline))
        kept = [(trial.values[0], trial.number, trial)
                for trial in self.trials if trial.values[0] < bound and tolerated(trial.user_attrs["losses"])]
        return [trial for _, _, trial in sorted(kept, key=lambda item: item[:2])]

    def importances(self) -> dict[str, float] | None:
        """{key: share in the variation of the score}, the greatest first, by fANOVA.

        Empty when the score does not vary; None without scikit-learn.
        """
        try:
            evaluator = optuna.importance.FanovaImportanceEvaluator(seed=self.study.seed)
        except ImportError:
            return None
        try:
            return dict(optuna.importance.get_param_importances(self._trials, evaluator=evaluator))
        except RuntimeError:  # no variance
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
