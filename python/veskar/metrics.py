# SPDX-License-Identifier: Apache-2.0
"""Metrics over plain arrays, to judge any tracker on the ground plane.

Objects and tracks are tables with the columns "time", "id", "x" and "y" (s and m): data frames,
dictionaries of arrays, or structured arrays. Times are moments: rows belong together when they are
equal. Distances are similarities as in TrackEval, 1 - distance / cutoff; a track matches within
half of the cutoff (CLEAR MOT, identity).
"""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Any, Callable

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


def _results(path: _Path, frame_rate: float,
             is_mot: bool) -> tuple[dict[str, Any], dict[str, Any]]:
    """What a file of results states, and the columns that all tables of it have."""
    if not frame_rate > 0.0:
        raise ValueError(f"frame_rate: {frame_rate} is not above 0")
    stated = _veskar._read_results(os.fsdecode(path), is_mot)
    return stated, {"time": stated["frame"] / frame_rate, "id": stated["id"],
                    "x": stated["position"][:, 0], "y": stated["position"][:, 1]}


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

    Raises
    ------
    InputError
        what is wrong with the file, and in which line
    """
    import numpy as np
    import pandas as pd

    stated, columns = _results(path, frame_rate, is_mot=True)
    box = stated["box"]
    # The file counts pixels from 1.
    left, top = box[:, 0] + 1.0, box[:, 1] + 1.0
    width, height = box[:, 2] - box[:, 0], box[:, 3] - box[:, 1]
    if ground:
        columns["x"], columns["y"] = ground(left, top, width, height)
    elif not np.isfinite(columns["x"]).all():
        line = int(stated["line"][~np.isfinite(columns["x"])][0])
        raise _fault(os.fsdecode(path), line, "no world coordinates: say with ground= where boxes stand")
    return pd.DataFrame({**columns, "left": left, "top": top, "width": width, "height": height,
                         "confidence": stated["confidence"]})


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

    Raises
    ------
    InputError
        what is wrong with the file, and in which line
    """
    import pandas as pd

    stated, columns = _results(path, frame_rate, is_mot=False)
    return pd.DataFrame({**columns, "class": stated["class"]})
