# SPDX-License-Identifier: Apache-2.0
"""All cores: work in several processes, each with a fusion of its own."""

from __future__ import annotations

import os
import sys
from typing import Any, Callable, Iterable, TypeVar

__all__ = ["map"]

_Item = TypeVar("_Item")
_Result = TypeVar("_Result")


def map(function: Callable[[_Item], _Result], items: Iterable[_Item], processes: int | None = None,
        progress: bool | None = None) -> list[_Result]:
    """Apply a function to items in several processes.

    Parameters
    ----------
    function : callable
        of one item; what it takes and returns is pickled, as recordings, runs, metrics and
        configurations can be
    items : iterable
        as seeds, or tuples of recording and configuration
    processes : int, optional
        default: one per core that this process may use
    progress : bool, optional
        draw a bar on standard error; default: when that is a terminal

    Returns
    -------
    list
        the results, in the order of the items

    Raises
    ------
    Exception
        the first one of the function, in the order of the items
    """
    # Not with the package, which most uses should not wait for.
    import concurrent.futures
    import multiprocessing

    items = list(items)
    shown = sys.stderr.isatty() if progress is None else progress
    processes = processes or len(os.sched_getaffinity(0))
    # A forked process knows functions that were defined interactively.
    context = multiprocessing.get_context("fork")
    with concurrent.futures.ProcessPoolExecutor(processes, mp_context=context) as pool:
        futures = [pool.submit(function, item) for item in items]
        try:
            if shown:
                _draw(concurrent.futures.as_completed(futures), len(futures))
            return [future.result() for future in futures]
        except BaseException:
            for future in futures:
                future.cancel()
            raise


def _draw(finished: Iterable[Any], count: int, width: int = 40) -> None:
    for done, _ in enumerate(finished, 1):
        filled = width * done // count
        bar = "#" * filled + "." * (width - filled)
        sys.stderr.write(f"\r[{bar}] {done}/{count}")
        sys.stderr.flush()
    sys.stderr.write("\n")
