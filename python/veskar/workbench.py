# SPDX-License-Identifier: Apache-2.0
"""The workbench as functions: simulate, read, replay, evaluate, calibrate, check and report.

They run in process, by the code of the program `veskar`, and release the interpreter lock.
"""

from __future__ import annotations

import contextlib
import json
import os
import sys
import tempfile
import weakref
from collections.abc import Callable, Iterator, Mapping, Sequence
from typing import TYPE_CHECKING, Any, NamedTuple

from . import _veskar

__all__ = ["Calibration", "Finding", "Metrics", "Recording", "Run", "calibrate", "check",
           "evaluate", "read_recording", "replay", "report", "simulate"]

if TYPE_CHECKING:
    import pandas as pd

    _Path = str | os.PathLike[str]
    _Progress = Callable[[float], object] | None

_BOOLEANS = ("confirmed",)


def _arrays(columns: dict[str, Any]) -> dict[str, Any]:
    """Columns of C++ as arrays; words become arrays of str."""
    import numpy as np

    made: dict[str, Any] = {}
    for name, column in columns.items():
        if isinstance(column, tuple):
            codes, words = column
            made[name] = np.array(words, dtype=object)[codes] if words else np.array([], dtype=object)
        else:
            made[name] = column.astype(bool) if name in _BOOLEANS else column
    return made


def _frame(columns: dict[str, Any]) -> pd.DataFrame:
    """Columns of C++ as a data frame; words become categories."""
    import pandas as pd

    return pd.DataFrame({
        name: pd.Categorical.from_codes(column[0], column[1]) if isinstance(column, tuple)
        else column.astype(bool) if name in _BOOLEANS else column
        for name, column in columns.items()})


def _settings(config: _veskar.Config | _Path | None, changes: Mapping[str, Any] | None,
              ) -> tuple[str, list[str], _veskar.Config | None]:
    """The arguments of C++ for a configuration: file, changes, Config."""
    pairs = [f"{key}={json.dumps(value)}" for key, value in (changes or {}).items()]
    if isinstance(config, _veskar.Config):
        sections = [key for key in changes or {} if "." in key and not key.startswith("veskarHost.")]
        if sections:
            raise ValueError(f"{sections[0]}: change the Config itself")
        return "", pairs, config
    return ("" if config is None else os.fsdecode(config)), pairs, None


class Recording:
    """A recording: what the sensors reported, and the truth if it is known.

    Holds nothing but the path; every reading begins anew, and memory does not depend on the length.

    Attributes
    ----------
    path : str
        the file
    header : dict
        its first line: name, camera, radar, site, origin ...
    """

    def __init__(self, path: _Path) -> None:
        self.path = os.fsdecode(path)
        self.header: dict[str, Any] = json.loads(_veskar._RecordingRows(self.path, False).header())

    def __repr__(self) -> str:
        return f"Recording({self.path!r})"

    def __reduce__(self) -> tuple[Any, ...]:
        return Recording, (self.path,)

    def frames(self) -> _veskar.RecordingFrames:
        """Iterate over the sensor frames lazily, as SensorFrame, for FusionPipeline.push.

        The attribute `end` of the iterator, once it is through, is the time to advance to.
        """
        return _veskar.RecordingFrames(self.path)

    def batches(self, rows: int = 100_000, truth: bool = True) -> Iterator[dict[str, Any]]:
        """Read lazily, some rows at a time.

        Parameters
        ----------
        rows : int
            of a batch, at least; a frame is not divided
        truth : bool
            whether to read the truth, too

        Yields
        ------
        dict
            of arrays, with the columns of `to_pandas`
        """
        reader = _veskar._RecordingRows(self.path, truth)
        while True:
            columns = reader.next(rows)
            if not len(columns["frame"]):
                return
            yield _arrays(columns)

    def to_pandas(self, truth: bool = True) -> pd.DataFrame:
        """Read the whole recording in long format: a row per report or true object.

        Returns
        -------
        pandas.DataFrame
            frame (line, from 0), sensor ("radar", "video", "truth"), time and received [s], id,
            class, class_probability, confirmed, coasting [s]; of radar range [m], azimuth [degrees
            clockwise from forward], speed [m/s], direction [degrees clockwise from forward],
            radial_speed [m/s]; of video left, bottom, right, top [image plane], u_rate and v_rate
            [1/s], age [s]; of the truth x (forward) and y (left) [m], vx and vy [m/s]. NaN where
            there is none.
        """
        return _frame(_veskar._RecordingRows(self.path, truth).next(sys.maxsize))


class Run:
    """Fused tracks of a recording.

    Attributes
    ----------
    path : str
        file of the fused tracks; that of a run without `output` is removed with the run
    recording : str
        file of the recording
    counts : dict
        frames pushed, added and failed, seconds inside the fusion
    """

    def __init__(self, path: str, recording: str, counts: dict[str, Any] | None = None,
                 explanations: str | None = None, temporary: bool = False) -> None:
        self.path = path
        self.recording = recording
        self.counts = counts
        self.explanations = explanations
        self._finalizer = weakref.finalize(self, _remove, path, os.getpid()) if temporary else None

    def __repr__(self) -> str:
        return f"Run({self.path!r} of {self.recording!r})"

    def __reduce__(self) -> tuple[Any, ...]:
        # A temporary file ends with this object: its contents travel.
        contents = self.to_bytes() if self._finalizer else None
        return _unpickle, (self.path, self.recording, self.counts, self.explanations, contents)

    def to_bytes(self) -> bytes:
        """The fused tracks as JSON Lines, as the program writes them."""
        with open(self.path, "rb") as file:
            return file.read()

    def batches(self, rows: int = 100_000) -> Iterator[dict[str, Any]]:
        """As `Recording.batches`, with the columns of `to_pandas`."""
        reader = _veskar._FusedRows(self.path)
        while True:
            columns = reader.next(rows)
            if not len(columns["frame"]):
                return
            yield _arrays(columns)

    def to_pandas(self) -> pd.DataFrame:
        """The fused tracks in long format: a row per system track and frame.

        Returns
        -------
        pandas.DataFrame
            frame (from 0), sensor of the frame, time and received [s], id, confirmed, probability,
            radar and video (number of sensor tracks behind it), class, class_probability, age [s],
            x (forward) and y (left) [m], vx and vy [m/s], var_x, cov_xy and var_y [m^2], speed
            [m/s], direction [degrees clockwise from forward], u and v [image plane], u_rate and
            v_rate [1/s], range [m], range_rate [m/s], left, bottom, right, top [image plane],
            latitude and longitude [degrees]. NaN where there is none.
        """
        return _frame(_veskar._FusedRows(self.path).next(sys.maxsize))


def _remove(path: str, owner: int) -> None:
    if os.getpid() == owner:  # not in a forked process
        with contextlib.suppress(FileNotFoundError):
            os.unlink(path)


def _temporary_file() -> str:
    descriptor, path = tempfile.mkstemp(prefix="veskar-", suffix=".jsonl")
    os.close(descriptor)
    return path


def _unpickle(path: str, recording: str, counts: dict[str, Any] | None, explanations: str | None,
              contents: bytes | None) -> Run:
    if contents is not None:
        path = _temporary_file()
        with open(path, "wb") as file:
            file.write(contents)
    return Run(path, recording, counts, explanations, temporary=contents is not None)


class Metrics:
    """The figures of an evaluation.

    Attributes
    ----------
    parts : dict
        {part: {tracker: {metric: value}}}; parts are "all", the classes and the range bands,
        trackers "fusion", "radar 3" (a radar track counts from the third detection on) ...; None
        where the truth does not permit a metric or there is nothing to average
    counts : dict or None
        of the fusion, when it ran
    """

    def __init__(self, result: dict[str, Any]) -> None:
        self._result = result
        self._report = json.loads(result["json"])
        self.parts: dict[str, dict[str, dict[str, Any]]] = self._report["parts"]
        self.counts: dict[str, Any] | None = result["counts"]

    def __reduce__(self) -> tuple[Any, ...]:
        return Metrics, (self._result,)

    def __str__(self) -> str:
        return str(self._result["table"])

    def __getitem__(self, metric: str) -> Any:
        """A metric of the fusion over the whole scene."""
        return self.parts["all"]["fusion"][metric]

    def to_json(self) -> str:
        """The report of `veskar evaluate --format json`."""
        return str(self._result["json"])

    def to_pandas(self) -> pd.DataFrame:
        """A row per part and tracker, a column per metric."""
        import pandas as pd

        rows = {(part, tracker): figures for part, trackers in self.parts.items()
                for tracker, figures in trackers.items()}
        frame = pd.DataFrame.from_dict(rows, orient="index").astype(float)
        frame.index.names = ["part", "tracker"]
        return frame

    def over_time(self) -> pd.DataFrame:
        """GOSPA at every moment of the truth.

        Returns
        -------
        pandas.DataFrame
            tracker, time [s], gospa [m], localisation_cost [m^2], missed, false (tracks)
        """
        return self._of_trackers("moments")

    def matches(self) -> pd.DataFrame:
        """Which track follows which object.

        Returns
        -------
        pandas.DataFrame
            tracker, time [s], object and track (ids), as matched by CLEAR MOT
        """
        return self._of_trackers("matches")

    def per_object(self) -> pd.DataFrame:
        """What became of every object that was ever matched.

        Returns
        -------
        pandas.DataFrame
            by tracker and object: matched (moments), tracks (number of different ones), first and
            last (times of the first and the last match, s)
        """
        grouped = self.matches().groupby(["tracker", "object"], sort=True)
        return grouped.agg(matched=("time", "size"), tracks=("track", "nunique"),
                           first=("time", "min"), last=("time", "max"))

    def _of_trackers(self, kind: str) -> pd.DataFrame:
        import pandas as pd

        series = self._result["over_time"]
        frames = [_frame(columns[kind]).assign(tracker=tracker) for tracker, columns in series.items()]
        joined = pd.concat(frames, ignore_index=True)
        return joined[["tracker", *joined.columns.drop("tracker")]]


class Calibration:
    """How a device is really mounted, as far as its recordings tell; str() is the answer in words.

    Attributes
    ----------
    values : dict
        {name: {"unit", "verdict", "error", "std", "interval95", "correction", "stated", "remedy"}};
        "error" is true minus stated, "verdict" "corrected", "as stated" or "cannot tell"; what a
        verdict does not have is missing
    is_told : bool
        whether the recordings tell any of the values
    installation : Installation
        the stated one with the significant errors corrected
    """

    def __init__(self, answer: dict[str, Any]) -> None:
        self._answer = answer
        self.values: dict[str, dict[str, Any]] = json.loads(answer["json"])["values"]
        self.is_told: bool = answer["is_told"]
        self.installation = _veskar.Installation.parse(answer["header"])

    def __reduce__(self) -> tuple[Any, ...]:
        return Calibration, (self._answer,)

    def __str__(self) -> str:
        return str(self._answer["text"])

    def to_json(self) -> str:
        """The answer of `veskar calibrate --format json`."""
        return str(self._answer["json"])

    def to_pandas(self) -> pd.DataFrame:
        """A row per value, with the columns of `values`; NaN where there is none."""
        import pandas as pd

        return pd.DataFrame.from_dict(self.values, orient="index")

    def correlations(self) -> pd.DataFrame:
        """Correlation of the estimated values with each other.

        Returns
        -------
        pandas.DataFrame
            symmetric, with ones on the diagonal
        """
        import numpy as np
        import pandas as pd

        names = list(self.values)
        matrix = pd.DataFrame(np.eye(len(names)), index=names, columns=names)
        for one, others in json.loads(self._answer["json"])["correlations"].items():
            for other, value in others.items():
                matrix.loc[one, other] = matrix.loc[other, one] = value
        return matrix


class Finding(NamedTuple):
    """A finding of `check`; str() gives the line that the program prints."""

    severity: str  #: "fault", "warning" or "note"
    line: int  #: 0 when it concerns the whole document
    key: str  #: with dots; may be empty
    value: str  #: as written
    message: str  #: what is wrong, and what was expected
    text: str  #: the line that the program prints

    def __str__(self) -> str:
        return self.text


def simulate(scenario: _Path, output: _Path, seed: int = 1, duration: float | None = None,
             progress: _Progress = None) -> Recording:
    """Play a scenario and record what its sensors report, with the truth.

    Parameters
    ----------
    scenario : path
        a scenario file
    output : path
        the recording to write
    seed : int
        of everything that is drawn: the same seed gives the same bytes
    duration : float, optional
        s, instead of the scenario's
    progress : callable, optional
        receives the completed part, 0 to 1

    Returns
    -------
    Recording
    """
    if duration is not None and not 1e-3 <= duration <= 1e6:
        raise ValueError(f"duration: {duration} s is not within 0.001 to 1e6")
    _veskar._simulate(os.fsdecode(scenario), os.fsdecode(output), seed, duration, progress)
    return Recording(output)


def read_recording(path: _Path) -> Recording:
    """Open a recording; see `Recording`.

    Raises
    ------
    OSError
        when it cannot be opened
    InputError
        when it is no recording, and from its methods for the first faulty line
    """
    return Recording(path)


def replay(recording: Recording | _Path, config: _veskar.Config | _Path | None = None,
           output: _Path | None = None, *, changes: Mapping[str, Any] | None = None,
           camera: _Path | None = None, installation: _Path | None = None,
           explanations: _Path | None = None, tags: bool = False,
           progress: _Progress = None) -> Run:
    """Send a recording through the fusion.

    Replays of one process take turns, because ids of system tracks are counted per process;
    `veskar.map` uses several.

    Parameters
    ----------
    recording : Recording or path
        what the sensors reported
    config : Config or path, optional
        configuration; default: the shipped one
    output : path, optional
        fused tracks to write; default: a temporary file, removed with the run
    changes : dict, optional
        constants of the host, as {"radarGain": 2.5}, or keys of the configuration in a file, as
        {"veskarModule.gatingDistance": 5.0}
    camera : path, optional
        camera to use instead of the recording's
    installation : path, optional
        installation to use instead of the recording's, as `calibrate` writes it; `camera` comes
        after it
    explanations : path, optional
        file that receives for every frame why each pair was or was not fused
    tags : bool
        add the detection priority's tags
    progress : callable, optional
        receives the completed part, 0 to 1

    Returns
    -------
    Run
    """
    source = _path_of(recording)
    path = _temporary_file() if output is None else os.fsdecode(output)
    run = Run(path, source, temporary=output is None)
    explained = _optional(explanations)
    _refuse_clash({"recording": source, "camera": camera, "installation": installation,
                   "configuration": None if isinstance(config, _veskar.Config) else config},
                  {"tracks": path, "explanations": explained or None})
    run.counts = _veskar._replay(source, path, explained, _optional(camera),
                                 _optional(installation), tags, *_settings(config, changes),
                                 progress)
    run.explanations = explained or None
    return run


def evaluate(recording: Recording | _Path, run: Run | _Path | None = None,
             config: _veskar.Config | _Path | None = None, *,
             changes: Mapping[str, Any] | None = None, camera: _Path | None = None,
             cutoff: float = 5.0, bands: Sequence[float] = (0.0, 20.0, 40.0, 80.0),
             hits: Sequence[int] = (3, 8, 15), whole_scene: bool = False, force: bool = False,
             progress: _Progress = None) -> Metrics:
    """Judge the fusion and each sensor alone by the truth of a recording.

    Parameters
    ----------
    recording : Recording or path
        a recording with truth
    run : Run or path, optional
        fused tracks of the recording; default: the fusion runs, with `config` and `changes` as in
        `replay`
    cutoff : float
        of GOSPA and OSPA and distance of similarity zero, m; a track counts as matched within half
        of it
    bands : sequence of float
        where range bands begin, m
    hits : sequence of int
        how often a single sensor must have seen a track for it to count; none: only the fusion is
        judged
    whole_scene : bool
        judge also where only one sensor can see
    force : bool
        accept fused tracks that were made from another recording
    progress : callable, optional
        receives the completed part, 0 to 1

    Returns
    -------
    Metrics
    """
    if run is not None and (config is not None or changes or camera is not None):
        raise ValueError("a run has its configuration already")
    if not 1e-3 <= cutoff <= 1e6:
        raise ValueError(f"cutoff: {cutoff} m is not within 0.001 to 1e6")
    if not all(0.0 <= band < float("inf") for band in bands) or not bands:
        raise ValueError(f"bands: {list(bands)} are not distances")
    if not all(1 <= count <= 1_000_000 for count in hits):
        raise ValueError(f"hits: {list(hits)} are not within 1 to 1000000")
    options = {"cutoff": cutoff, "bands": list(bands), "hits": list(hits), "whole_scene": whole_scene}
    return Metrics(_veskar._evaluate(
        _path_of(recording), "" if run is None else _path_of(run), _optional(camera),
        *_settings(config, changes), options, force, progress))


def calibrate(recordings: Recording | _Path | Sequence[Recording | _Path],
              output: _Path | None = None, *, apply: _Path | None = None,
              estimate: str | Sequence[str] = (), hold: str | Sequence[str] = (),
              progress: _Progress = None) -> Calibration:
    """Estimate how a device is really mounted, and how late the stamps of its radar are.

    docs/calibration.md says what is estimated, what recordings must contain, and how sure the
    answer is.

    Parameters
    ----------
    recordings : Recording or path, or a sequence of them
        of one installation
    output : path, optional
        header with the corrected installation to write, for `replay(installation=...)`
    apply : path, optional
        corrected copy of the recording to write: installation, radar time stamps and azimuths
    estimate : sequence of str
        further values to estimate: "drift", "azimuthScale", "radar.yaw", "radar.forward",
        "radar.left", "focalScale"
    hold : sequence of str
        values to take as stated, as "camera.roll"
    progress : callable, optional
        receives the part of each recording that has been read, 0 to 1

    Returns
    -------
    Calibration

    Raises
    ------
    InputError
        for a value that is unknown, recordings of different installations, and one that violates a
        convention of the format: see `check`
    NotImplementedError
        when the package was built without Ceres
    """
    if isinstance(recordings, (Recording, str, os.PathLike)):
        recordings = [recordings]
    sources = [_path_of(recording) for recording in recordings]
    if apply is not None and len(sources) != 1:
        raise ValueError("apply: takes one recording")
    for source in sources:
        _refuse_clash({"recording": source}, {"header": output, "corrected recording": apply})
    return Calibration(_veskar._calibrate(sources, _names(estimate), _names(hold), _optional(output),
                                          _optional(apply), progress))


def check(path: Recording | _Path, progress: _Progress = None) -> list[Finding]:
    """Say what is wrong with a configuration, a camera, a scenario, run.json or a recording.

    Returns
    -------
    list of Finding
    """
    return [Finding(*values) for values in _veskar._check(_path_of(path), progress)]


def report(recording: Recording | _Path, *runs: Run | _Path, path: _Path, force: bool = False,
           progress: _Progress = None) -> None:
    """Show a recording and one or two of its runs in one HTML file.

    Parameters
    ----------
    recording : Recording or path
    *runs : Run or path
        one or two; the explanations of a Run are shown, too
    path : path
        the HTML file to write
    force : bool
        accept runs of another recording
    """
    if not 1 <= len(runs) <= 2:
        raise ValueError(f"one or two runs can be shown, not {len(runs)}")
    shown = [(_path_of(run), getattr(run, "explanations", None) or "") for run in runs]
    _refuse_clash({"recording": _path_of(recording), "run": shown[0][0]}, {"report": path})
    _veskar._report(_path_of(recording), shown, os.fsdecode(path), force, progress)


def _path_of(file: Recording | Run | _Path) -> str:
    return file.path if isinstance(file, (Recording, Run)) else os.fsdecode(file)


def _optional(path: _Path | None) -> str:
    return "" if path is None else os.fsdecode(path)


def _names(words: str | Sequence[str]) -> list[str]:
    return [words] if isinstance(words, str) else list(words)


def _refuse_clash(inputs: Mapping[str, _Path | None], outputs: Mapping[str, _Path | None]) -> None:
    """Refuse to overwrite an input or to write two outputs into one file."""
    for role, output in outputs.items():
        for other, path in inputs.items():
            if output is not None and path is not None and os.path.exists(output) and (
                    os.path.exists(path) and os.path.samefile(output, path)):
                raise ValueError(f"{output}: the {role} would overwrite the {other}")
    written = [os.path.realpath(output) for output in outputs.values() if output is not None]
    if len(set(written)) < len(written):
        raise ValueError(f"{written[0]}: two outputs cannot go to one file")
