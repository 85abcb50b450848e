# SPDX-License-Identifier: Apache-2.0
"""The recordings of a study and what a setting costs on them."""

from __future__ import annotations

import concurrent.futures
import contextlib
import ctypes
import functools
import hashlib
import json
import multiprocessing
import os
import signal
from collections.abc import Callable, Iterable, Mapping, Sequence
from types import TracebackType
from typing import Any, NamedTuple, Optional, Tuple, TypeVar

import veskar

from .judgement import Costs
from .study import HIGHER_IS_BETTER, Scene, Study, StudyError

Item = TypeVar("Item")
Result = TypeVar("Result")

#: scenario, path of the recording, seed, duration
Play = Tuple[str, str, int, Optional[float]]


class Sample(NamedTuple):
    """A recording of a scene."""

    scene: str
    case: str  #: the seed, or the path of the recording
    metrics: Tuple[str, ...]  #: what is measured, the scene's own metric first
    path: str

    @property
    def name(self) -> str:
        return f"{self.scene}/{self.case}"


#: configuration or None, changes, the recording
Job = Tuple[Optional[str], Mapping[str, Any], Sample]


class Untold(StudyError):
    """A metric that a recording does not tell, as the delay to confirmation where nothing is found."""


def samples_of(study: Study, part: str, directory: str, processes: Processes) -> list[Sample]:
    """The recordings of a part of a study; scenarios are played into the directory, once.

    Parameters
    ----------
    study : Study
    part : str
        "training" or "held_out"
    directory : path
        where simulated recordings are kept; several processes may use it at the same time
    processes : Processes

    Returns
    -------
    list of Sample
    """
    os.makedirs(directory, exist_ok=True)
    samples: list[Sample] = []
    plays: list[Play] = []
    for scene in study.scenes:
        for case in getattr(scene, part):
            path = case
            if scene.scenario is not None:
                identity = _identity(scene.scenario, scene)
                path = os.path.join(directory, f"{scene.name}-{identity}-{case}.jsonl")
                plays.append((scene.scenario, path, case, scene.duration))
            samples.append(Sample(scene.name, str(case), study.metrics(scene), path))
    processes.map(_play, [play for play in plays if not os.path.exists(play[1])])
    return samples


def _identity(scenario: str, scene: Scene) -> str:
    """Differs when the scenario would give another recording."""
    with open(scenario, "rb") as file:
        played = file.read() + json.dumps([scene.duration, veskar.__version__]).encode()
    return hashlib.sha256(played).hexdigest()[:12]


def _play(play: Play) -> None:
    scenario, path, seed, duration = play
    veskar.simulate(scenario, path, seed, duration)  # appears complete or not at all


def digests_of(samples: Iterable[Sample]) -> dict[str, str]:
    """{name: SHA-256} of recordings."""
    digests = {}
    for sample in samples:
        digest = hashlib.sha256()
        with open(sample.path, "rb") as file:
            for block in iter(functools.partial(file.read, 1 << 20), b""):
                digest.update(block)
        digests[sample.name] = digest.hexdigest()
    return digests


def cost(job: Job) -> dict[str, float]:
    """What a setting costs on a recording: each metric, or what it lacks to 1.

    Raises
    ------
    Untold
    """
    base, changes, sample = job
    judged = veskar.evaluate(sample.path, config=base, changes=dict(changes), hits=())  # the fusion only
    values: Mapping[str, float | None] = judged.parts["all"]["fusion"]
    costs = {}
    for metric in sample.metrics:
        value = values.get(metric)
        if value is None:
            raise Untold(f"{sample.path}: its truth does not tell {metric}")
        costs[metric] = 1.0 - value if metric in HIGHER_IS_BETTER else value
    return costs


class Processes:
    """Calls functions in processes that end with this one, however it ends."""

    def __init__(self, count: int | None = None) -> None:
        self._count = count or len(os.sched_getaffinity(0))
        self._stack = contextlib.ExitStack()
        self._pool: concurrent.futures.ProcessPoolExecutor | None = None

    def __enter__(self) -> Processes:
        if self._count > 1:
            # Spawned: a forked one would share the connection to the storage.
            self._pool = self._stack.enter_context(concurrent.futures.ProcessPoolExecutor(
                self._count, multiprocessing.get_context("spawn"), _end_with_parent, (os.getpid(),)))
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        if self._pool and kind is not None:
            self._pool.shutdown(wait=False, cancel_futures=True)
        self._stack.__exit__(kind, error, trace)

    def map(self, function: Callable[[Item], Result], jobs: Sequence[Item]) -> list[Result]:
        """The results, in the order of the jobs."""
        return list(self._pool.map(function, jobs) if self._pool else map(function, jobs))


def _end_with_parent(parent: int) -> None:
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # the parent handles it
    set_death_signal = 1  # PR_SET_PDEATHSIG of prctl(2)
    ctypes.CDLL(None).prctl(set_death_signal, signal.SIGKILL)
    if os.getppid() != parent:
        os._exit(1)


def costs_of(samples: Sequence[Sample], base: str | None, changes: Mapping[str, Any],
             processes: Processes,
             function: Callable[[Job], dict[str, float]] = cost) -> Costs:
    """What a setting costs on recordings."""
    costs = processes.map(function, [(base, changes, sample) for sample in samples])
    return {sample.name: value for sample, value in zip(samples, costs)}
