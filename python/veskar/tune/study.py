# SPDX-License-Identifier: Apache-2.0
"""Study documents: what is searched, on what, and what must not get worse."""

from __future__ import annotations

import json
import math
import os
from collections.abc import Callable
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import veskar

from .settings import key_in_file, temporary_configuration

if TYPE_CHECKING:
    from optuna.trial import Trial

#: Metrics of `veskar evaluate` that a study can take. Of the second kind more is better, and 1 the best.
LOWER_IS_BETTER = ("GOSPA", "OSPA", "IDSW", "missed_per_instant", "false_per_instant",
                   "confirmation_delay")
HIGHER_IS_BETTER = ("HOTA", "MOTA", "IDF1")
METRICS = LOWER_IS_BETTER + HIGHER_IS_BETTER


class StudyError(ValueError):
    """A study document that cannot be used; the message names file and key."""


@dataclass(frozen=True)
class Parameter:
    """A number or a choice that is searched.

    Attributes
    ----------
    key : str
        as `--set` takes it
    low, high : float or int
        the range; NaN for a choice
    log : bool
        whether to search the logarithm
    choices : tuple or None
        the values of a choice
    """

    key: str
    low: float = math.nan
    high: float = math.nan
    log: bool = False
    choices: tuple[Any, ...] | None = None

    def suggest(self, trial: Trial) -> Any:
        """The value of an Optuna trial."""
        if self.choices is not None:
            return trial.suggest_categorical(self.key, self.choices)
        if isinstance(self.low, int) and isinstance(self.high, int):
            return trial.suggest_int(self.key, self.low, self.high, log=self.log)
        return trial.suggest_float(self.key, self.low, self.high, log=self.log)

    def ends(self) -> tuple[Any, ...]:
        """The values at which the parameter is checked."""
        return self.choices if self.choices is not None else (self.low, self.high)


@dataclass(frozen=True)
class Scene:
    """A scenario that is played with seeds, or a group of recordings.

    Attributes
    ----------
    name : str
    metric : str
        of `veskar evaluate`, of which the score is made
    weight : float
        in the score; 0: the scene must not get worse, but nothing is gained by it
    scenario : str or None
        file of the scenario; None for recordings
    duration : float or None
        s, instead of the scenario's
    training, held_out : tuple
        seeds, or files of recordings
    """

    name: str
    metric: str
    weight: float
    scenario: str | None
    duration: float | None
    training: tuple[Any, ...]
    held_out: tuple[Any, ...]


@dataclass(frozen=True)
class Study:
    """What a study document says; paths are those that can be opened."""

    path: str
    name: str
    base: str | None
    parameters: tuple[Parameter, ...]
    scenes: tuple[Scene, ...]
    tolerance: float
    trials: int
    finalists: int
    seed: int
    document: dict[str, Any] = field(repr=False)
    prune: bool = True  #: whether to give up hopeless trials after their first recordings
    objectives: tuple[str, ...] = ()  #: metrics that are minimised beside the score

    def metrics(self, scene: Scene) -> tuple[str, ...]:
        """What is measured of a scene."""
        return tuple(dict.fromkeys((scene.metric, *self.objectives)))


class _Reader:
    """Takes members out of a JSON object and complains with file and key."""

    def __init__(self, path: str, key: str, value: Any) -> None:
        self.path, self.key = path, key
        if not isinstance(value, dict):
            raise self.error("", "an object is expected")
        self.rest = dict(value)

    def error(self, key: str, reason: str) -> StudyError:
        place = ".".join(part for part in (self.key, key) if part)
        return StudyError(f"{self.path}: {place + ': ' if place else ''}{reason}")

    def take(self, key: str, kind: type | tuple[type, ...], expected: str, default: Any = ...,
             valid: Callable[[Any], bool] = lambda value: True) -> Any:
        if key not in self.rest:
            if default is ...:
                raise self.error(key, f"missing; {expected} is expected")
            return default
        value = self.rest.pop(key)
        # JSON's true is no number.
        is_of_kind = isinstance(value, kind) and (kind is bool or not isinstance(value, bool))
        if not is_of_kind or not valid(value):
            raise self.error(key, f"{json.dumps(value)} is not {expected}")
        return value

    def nested(self, key: str) -> _Reader:
        if key not in self.rest:
            raise self.error(key, "missing; an object is expected")
        place = ".".join(part for part in (self.key, key) if part)
        return _Reader(self.path, place, self.rest.pop(key))

    def end(self) -> None:
        if self.rest:
            raise self.error(next(iter(self.rest)), "not known here")


def read_study(path: str | os.PathLike[str]) -> Study:
    """Read a study document.

    Parameters
    ----------
    path : path
        the document; paths in it are relative to its directory

    Returns
    -------
    Study

    Raises
    ------
    StudyError
        what is wrong, and where
    OSError
        when it cannot be opened
    """
    path = os.fsdecode(path)
    with open(path, encoding="utf-8") as file:
        try:
            document = json.load(file)
        except ValueError as error:
            raise StudyError(f"{path}: not JSON: {error}") from error
    reader = _Reader(path, "", document)
    directory = os.path.dirname(path)

    def whole(key: str, default: int, lowest: int) -> int:
        taken: int = reader.take(key, int, f"a whole number from {lowest} on", default,
                                 lambda value: bool(value >= lowest))
        return taken

    base = reader.take("base", str, "the path of a configuration", None)
    study = Study(
        path=path,
        name=reader.take("name", str, "a name", os.path.splitext(os.path.basename(path))[0],
                         lambda name: bool(name) and "/" not in name),
        base=None if base is None else os.path.join(directory, base),
        parameters=_read_parameters(reader.nested("parameters")),
        scenes=_read_scenes(reader.nested("scenes"), directory),
        tolerance=reader.take("tolerance", (int, float), "a fraction from 0 to 1", 0.02,
                              lambda value: bool(0 <= value <= 1)),
        trials=whole("trials", 100, 1),
        finalists=whole("finalists", 3, 1),
        seed=whole("seed", 1, 0),
        document=document,
        prune=reader.take("prune", bool, "true or false", True),
        objectives=tuple(reader.take(
            "objectives", list, "a list of different metrics: " + ", ".join(METRICS), [],
            lambda values: all(value in METRICS for value in values) and len(set(values)) == len(values))))
    reader.end()
    _check_keys(study)
    return study


def _read_parameters(reader: _Reader) -> tuple[Parameter, ...]:
    parameters = tuple(_read_parameter(key, reader.nested(key)) for key in list(reader.rest))
    if not parameters:
        raise reader.error("", "no parameter to search")
    return parameters


def _read_parameter(key: str, reader: _Reader) -> Parameter:
    if "choices" in reader.rest:
        choices = reader.take(
            "choices", list, "a list of two values or more", valid=lambda values: len(values) > 1
            and all(isinstance(value, (bool, int, float, str)) for value in values))
        reader.end()
        return Parameter(key, choices=tuple(choices))
    low = reader.take("low", (int, float), "a number", valid=math.isfinite)
    high = reader.take("high", (int, float), f"a number above {low}",
                       valid=lambda value: bool(low < value < math.inf))
    log = reader.take("log", bool, "true or false", False)
    if log and low <= 0:
        raise reader.error("low", f"{low} has no logarithm")
    reader.end()
    return Parameter(key, low, high, log)


def _read_scenes(reader: _Reader, directory: str) -> tuple[Scene, ...]:
    scenes = tuple(_read_scene(name, reader.nested(name), directory) for name in list(reader.rest))
    if not any(scene.weight for scene in scenes):
        raise reader.error("", "no scene with a weight above 0")
    return scenes


def _read_scene(name: str, reader: _Reader, directory: str) -> Scene:
    if "/" in name:
        raise reader.error("", "a name without / is expected")
    scenario = reader.take("scenario", str, "the path of a scenario", None)
    duration = reader.take("duration", (int, float), "a time in s", None,
                           lambda value: bool(1e-3 <= value <= 1e6))
    if scenario is None and duration is not None:
        raise reader.error("duration", "only a scenario has one")
    scene = Scene(
        name=name,
        metric=reader.take("metric", str, "one of " + ", ".join(METRICS), "GOSPA",
                           lambda value: value in METRICS),
        weight=reader.take("weight", (int, float), "a number from 0 on", 1.0,
                           lambda value: bool(0 <= value < math.inf)),
        scenario=None if scenario is None else os.path.join(directory, scenario),
        duration=duration,
        training=_read_cases(reader, "training", 1, scenario is None, directory),
        # An interval of confidence needs two.
        held_out=_read_cases(reader, "heldOut", 2, scenario is None, directory))
    common = set(scene.training) & set(scene.held_out)
    if common:
        raise reader.error("heldOut", f"{sorted(common)[0]} is used for training, too")
    reader.end()
    return scene


def _read_cases(reader: _Reader, key: str, least: int, of_recordings: bool,
                directory: str) -> tuple[Any, ...]:
    kind: type = str if of_recordings else int
    expected = "paths of recordings" if of_recordings else "seeds"
    cases = reader.take(
        key, list, f"a list of {least} or more different {expected}",
        valid=lambda values:
        all(isinstance(value, kind) and not isinstance(value, bool) for value in values)
        and (of_recordings or all(value >= 0 for value in values))
        and len(set(values)) == len(values) >= least)
    return tuple(os.path.join(directory, case) if of_recordings else case for case in cases)


def _check_keys(study: Study) -> None:
    """Refuse keys that the library does not know and values that it does not take.

    Unusual ones may be tried.
    """
    for parameter in study.parameters:
        for value in parameter.ends():
            with temporary_configuration(study.base, {parameter.key: value}) as path:
                with open(path, encoding="utf-8") as file:
                    unused = {fault.key for fault in veskar.find_faults(file.read())}
                for finding in veskar.check(path):
                    if finding.key == key_in_file(parameter.key) and (
                            finding.severity == "fault" or finding.key in unused):
                        raise StudyError(f"{study.path}: parameters.{parameter.key}: with "
                                         f"{json.dumps(value)}: {finding.message}")
