# SPDX-License-Identifier: Apache-2.0
"""Metrics over plain arrays, to judge any tracker on the ground plane.

Objects and tracks are tables with the columns "time", "id", "x" and "y" (s and m): data frames,
dictionaries of arrays, or structured arrays. Times are moments: rows belong together when they are
equal. Distances are similarities as in TrackEval, 1 - distance / cutoff; a track matches within
half of the cutoff (CLEAR MOT, identity).
"""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Any, Callable, Iterator

from . import _veskar

__all__ = ["clear_mot", "gospa", "hota", "identity", "judge", "ospa", "over_time", "read_kitti",
           "read_mot"]

if TYPE_CHECKING:
    import numpy as np
    import pandas as pd
    from numpy.typing import ArrayLike, NDArray

    _Floats = NDArray[np.float64]
    _Path = str | os.PathLike[str]


def _points(points: ArrayLike, role: str) -> _Floats:
    import numpy as np

    points = np.asarray(points, dtype=float)
    points = points.reshape(0, 2) if points.size == 0 else points
    if points.ndim != 2 or points.shape[1] != 2 or not np.isfinite(points).all():
        raise ValueError(f"{role}: an n x 2 array of finite positions is needed")
    return points


def _table(table: Any, role: str) -> tuple[_Floats, NDArray[Any], _Floats]:
    import numpy as np

    try:
        time, ids, x, y = (np.asarray(table[name]) for name in ("time", "id", "x", "y"))
    except (KeyError, ValueError, IndexError, TypeError) as error:
        raise ValueError(f'{role}: columns "time", "id", "x" and "y" are needed') from error
    if not len(time) == len(ids) == len(x) == len(y):
        raise ValueError(f"{role}: the columns differ in length")
    if not np.isfinite(time.astype(float)).all():
        raise ValueError(f"{role}: a time is not finite")
    places = _points(np.column_stack([x, y]), role)
    pairs = np.stack([np.unique(time, return_inverse=True)[1], np.unique(ids, return_inverse=True)[1]])
    if np.unique(pairs, axis=1).shape[1] < len(time):
        raise ValueError(f"{role}: an id occurs twice at one time")
    return time.astype(float), ids, places


def _check(cutoff: float, order: float) -> None:
    if not 0.0 < cutoff < float("inf"):
        raise ValueError(f"cutoff: {cutoff} m is not above 0")
    if not 1.0 <= order < float("inf"):
        raise ValueError(f"order: {order} is not at least 1")


def _judge(truth: Any, tracks: Any, cutoff: float,
           order: float) -> tuple[dict[str, float], _Floats, list[tuple[float, ...]]]:
    import numpy as np

    _check(cutoff, order)
    tables = _table(truth, "truth"), _table(tracks, "tracks")
    times = np.unique(np.concatenate([tables[0][0], tables[1][0]]))
    arguments: list[Any] = [len(times)]
    for time, ids, places in tables:
        order_of_time = np.argsort(time, kind="stable")
        arguments += [np.searchsorted(times, time[order_of_time]),
                      np.unique(ids, return_inverse=True)[1][order_of_time], places[order_of_time]]
    arguments += [cutoff, order]
    figures, moments = _veskar._judge_arrays(*arguments)
    return figures, times, moments


def _at_one_moment(truth: ArrayLike, tracks: ArrayLike, cutoff: float,
                   order: float) -> tuple[float, ...]:
    import numpy as np

    _check(cutoff, order)
    arguments: list[Any] = [1]
    for points, role in ((truth, "truth"), (tracks, "tracks")):
        points = _points(points, role)
        arguments += [np.zeros(len(points)), np.arange(len(points)), points]
    arguments += [cutoff, order]
    return _veskar._judge_arrays(*arguments)[1][0]


def gospa(truth: ArrayLike, tracks: ArrayLike, cutoff: float = 5.0,
          order: float = 2.0) -> dict[str, float]:
    """Generalised optimal sub-pattern assignment metric at one moment, alpha = 2.

    Rahmathullah, Garcia-Fernandez, Svensson, FUSION 2017.

    Parameters
    ----------
    truth, tracks : array_like, n x 2
        positions, m
    cutoff : float
        pairs farther apart count as one missed and one false, m
    order : float
        p, at least 1

    Returns
    -------
    dict
        gospa [m], localisation_cost [m^p], missed, false
    """
    distance, _, cost, missed, false = _at_one_moment(truth, tracks, cutoff, order)
    return {"gospa": distance, "localisation_cost": cost, "missed": int(missed), "false": int(false)}


def ospa(truth: ArrayLike, tracks: ArrayLike, cutoff: float = 5.0, order: float = 2.0) -> float:
    """Optimal sub-pattern assignment metric at one moment, m; arguments as in `gospa`.

    Schuhmacher, Vo, Vo, IEEE Trans. Signal Processing 56, 2008.
    """
    return _at_one_moment(truth, tracks, cutoff, order)[1]


def judge(truth: Any, tracks: Any, cutoff: float = 5.0, order: float = 2.0) -> dict[str, float]:
    """All metrics of a tracker over time.

    Parameters
    ----------
    truth, tracks : table
        see the module
    cutoff : float
        of GOSPA and OSPA, and distance of similarity zero, m
    order : float
        of GOSPA and OSPA

    Returns
    -------
    dict
        GOSPA and its parts, OSPA [m], MOTA, MOTP, TP, FN, FP, IDSW, Frag, MT, PT, ML, IDF1, IDP,
        IDR, HOTA, DetA, AssA, LocA; NaN where there is nothing to average
    """
    return _judge(truth, tracks, cutoff, order)[0]


def over_time(truth: Any, tracks: Any, cutoff: float = 5.0, order: float = 2.0) -> pd.DataFrame:
    """GOSPA and OSPA at every moment; arguments as in `judge`.

    Returns
    -------
    pandas.DataFrame
        time [s], gospa, ospa [m], localisation_cost [m^p], missed, false
    """
    import pandas as pd

    _, times, moments = _judge(truth, tracks, cutoff, order)
    frame = pd.DataFrame(moments, columns=["gospa", "ospa", "localisation_cost", "missed", "false"])
    frame.insert(0, "time", times)
    return frame.astype({"missed": int, "false": int})


def hota(truth: Any, tracks: Any, cutoff: float = 5.0) -> dict[str, float]:
    """HOTA, DetA, AssA and LocA (Luiten et al., IJCV 129, 2021); arguments as in `judge`."""
    return _chosen(truth, tracks, cutoff, ("HOTA", "DetA", "AssA", "LocA"))


def clear_mot(truth: Any, tracks: Any, cutoff: float = 5.0) -> dict[str, float]:
    """MOTA, MOTP and counts (Bernardin, Stiefelhagen, 2008); arguments as in `judge`."""
    return _chosen(truth, tracks, cutoff, ("MOTA", "MOTP", "MOTP_distance", "TP", "FN", "FP", "IDSW",
                                           "Frag", "MT", "PT", "ML"))


def identity(truth: Any, tracks: Any, cutoff: float = 5.0) -> dict[str, float]:
    """IDF1, IDP and IDR (Ristani et al., 2016); arguments as in `judge`."""
    return _chosen(truth, tracks, cutoff, ("IDF1", "IDP", "IDR"))


def _chosen(truth: Any, tracks: Any, cutoff: float, names: tuple[str, ...]) -> dict[str, float]:
    figures = judge(truth, tracks, cutoff)
    return {name: figures[name] for name in names}


def _fault(file: str, line: int, reason: str) -> _veskar.InputError:
    error = _veskar.InputError(f"{file}:{line}: {reason}")
    error.file, error.line, error.key, error.reason = file, line, None, reason
    return error


def _rows(path: _Path, separator: str | None,
          least: int) -> Iterator[tuple[str, int, list[str]]]:
    """Numbers of the lines of a text file, with the place of a fault."""
    file = os.fsdecode(path)
    with open(path, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            if not line.strip():
                continue
            cells = [cell.strip() for cell in line.split(separator)]
            if len(cells) < least:
                raise _fault(file, number, f"{len(cells)} columns where {least} are needed")
            yield file, number, cells


def _number(file: str, line: int, text: str, kind: Callable[[float], float] = float) -> float:
    try:
        value = kind(float(text))
    except (ValueError, OverflowError):
        raise _fault(file, line, f'"{text}" is no number') from None
    return value


def read_mot(path: _Path, frame_rate: float,
             ground: Callable[..., tuple[Any, Any]] | None = None) -> pd.DataFrame:
    """Read tracks or truth in the format of MOTChallenge.

    Parameters
    ----------
    path : path
        lines "frame, id, left, top, width, height, confidence, x, y, z"
    frame_rate : float
        frames per second; frame 1 is at time 0
    ground : callable, optional
        for files without world coordinates: receives left, top, width and height (arrays, pixels)
        and returns x and y on the ground (arrays, m)

    Returns
    -------
    pandas.DataFrame
        time [s], id, x, y [m], left, top, width, height [pixels], confidence
    """
    import numpy as np
    import pandas as pd

    if not frame_rate > 0.0:
        raise ValueError(f"frame_rate: {frame_rate} is not above 0")
    rows = []
    for file, line, cells in _rows(path, ",", 7 if ground else 9):
        numbers = [_number(file, line, cell) for cell in cells[:9]]
        if not ground and numbers[7] == numbers[8] == -1.0:
            raise _fault(file, line, "no world coordinates: say with ground= where boxes stand")
        rows.append(numbers[:7] + (numbers[7:9] if not ground else [np.nan, np.nan]))
    names = ["frame", "id", "left", "top", "width", "height", "confidence", "x", "y"]
    table = pd.DataFrame(rows, columns=names, dtype=float)
    if ground:
        table["x"], table["y"] = ground(*(table[name].to_numpy() for name in names[2:6]))
    table["time"] = (table["frame"] - 1.0) / frame_rate
    return table.astype({"id": int})[["time", "id", "x", "y", *names[2:7]]]


def read_kitti(path: _Path, frame_rate: float = 10.0) -> pd.DataFrame:
    """Read tracks or labels in the tracking format of KITTI; "DontCare" is left out.

    Parameters
    ----------
    path : path
        lines with 17 columns and an optional score
    frame_rate : float
        frames per second; frame 0 is at time 0

    Returns
    -------
    pandas.DataFrame
        time [s], id, x (forward) and y (left of the camera) [m], class
    """
    import pandas as pd

    if not frame_rate > 0.0:
        raise ValueError(f"frame_rate: {frame_rate} is not above 0")
    rows = []
    for file, line, cells in _rows(path, None, 17):
        if cells[2] != "DontCare":
            # The camera's x points right, its z forward.
            right, forward = _number(file, line, cells[13]), _number(file, line, cells[15])
            rows.append((_number(file, line, cells[0]) / frame_rate,
                         _number(file, line, cells[1], int), forward, -right, cells[2]))
    return pd.DataFrame(rows, columns=["time", "id", "x", "y", "class"])
