# SPDX-License-Identifier: Apache-2.0
"""The command `veskar tune`."""

from __future__ import annotations

import argparse
import contextlib
import fcntl
import os
import signal
import sys
from collections.abc import Iterator, Sequence

_EPILOG = """\
Exit status: 0 a setting is recommended, or a worker is done; 1 none is; 2 wrong usage or wrong
input. A search that was killed goes on with the same command."""


def main(arguments: Sequence[str] | None = None) -> int:
    """Run the command; returns its exit status."""
    options = _parser().parse_args(arguments)
    try:
        return _tune(options)
    except ModuleNotFoundError as error:
        print(f"veskar tune: {error}: install python3-optuna and python3-scipy, and python3-psycopg2 for "
              "--storage", file=sys.stderr)
    except (OSError, ValueError) as error:
        print(f"veskar tune: {error}", file=sys.stderr)
    except KeyboardInterrupt:
        print("veskar tune: interrupted; the same command goes on", file=sys.stderr)
        signal.signal(signal.SIGINT, signal.SIG_DFL)
        os.kill(os.getpid(), signal.SIGINT)
    return 2


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="veskar tune", epilog=_EPILOG,
        description="Searches for settings of the fusion that are better than a baseline on recordings "
        "that the search has not seen, and make no scene worse.")
    parser.add_argument("study", help="the study document")
    parser.add_argument("-o", "--output", metavar="DIRECTORY",
                        help="where recordings, trials and answer go (default: the name of the study)")
    parser.add_argument("--trials", type=_positive, help="complete trials to reach (default: the study's)")
    parser.add_argument("--processes", type=_positive,
                        help="that evaluate the recordings of a trial (default: all cores)")
    parser.add_argument("--storage", metavar="URL",
                        help="PostgreSQL, for many workers: postgresql://user@host/database")
    parser.add_argument("--worker", action="store_true",
                        help="only search, beside others; another command judges (needs --storage)")
    parser.add_argument("--explain", action="store_true",
                        help="print in words which parameters mattered and what changed, too")
    parser.add_argument("--grid", action="append", default=[], metavar="KEY[=STEPS]",
                        help="instead of the search: the score over a parameter of the study, or over two "
                        "with another --grid, as grid.txt and grid.csv (default: 5 steps of its range)")
    parser.add_argument("--lease", type=_positive, default=300, metavar="SECONDS",
                        help="after which a silent worker is taken for dead; the same for all (default: 300)")
    return parser


def _positive(text: str) -> int:
    value = int(text)
    if value < 1:
        raise ValueError
    return value


@contextlib.contextmanager
def _alone_in(directory: str) -> Iterator[None]:
    """The kernel gives the lock back when the process ends, however it does."""
    with open(os.path.join(directory, "lock"), "w", encoding="utf-8") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            raise ValueError(f"{directory}: another search works there") from None
        yield


def _tune(options: argparse.Namespace) -> int:
    import optuna
    import sqlalchemy

    if options.worker and not options.storage:
        raise ValueError("--worker needs --storage")
    if options.grid and options.trials:
        raise ValueError("--trials: the trials of --grid are its combinations")
    try:
        return _search(options)
    except (sqlalchemy.exc.SQLAlchemyError, optuna.exceptions.StorageInternalError) as error:
        raise ValueError(f"storage: {error}") from error


def _search(options: argparse.Namespace) -> int:
    from . import grid
    from .answer import write_answer
    from .samples import Processes, samples_of
    from .search import Search
    from .storage import SharedStorage, Storage
    from .study import read_study

    study = read_study(options.study)
    directory = os.path.abspath(options.output or study.name)
    recordings = os.path.join(directory, "recordings")
    axes = grid.read_axes(study, options.grid)
    if axes:
        study = grid.study_of(study, axes)
    settings = grid.settings_of(axes)
    trials = len(settings) if axes else options.trials or study.trials
    os.makedirs(directory, exist_ok=True)
    # Workers write no answer.
    alone = contextlib.nullcontext() if options.worker else _alone_in(directory)
    with alone, Processes(options.processes) as processes:
        storage = (SharedStorage(options.storage, options.lease) if options.storage
                   else Storage(f"sqlite:///{os.path.join(directory, 'study.db')}"))
        training = samples_of(study, "training", recordings, processes)
        search = Search(study, training, processes, storage)

        def progress(count: int, best: float | None) -> None:
            print(f"{count}/{trials} best {'-' if best is None else format(best, '.4f')}", file=sys.stderr)

        if axes:
            search.try_all(settings, progress)
        else:
            search.run(trials, progress)
        if options.worker:
            return 0
        if axes:
            print(grid.write_grid(directory, search, axes), end="")
            return 0
        held_out = samples_of(study, "held_out", recordings, processes)
        judged = list(search.judge(held_out))
        answer = write_answer(directory, search, held_out, judged)
        print(answer.table + (f"\n{answer.explanation}" if options.explain else ""), end="")
        return 0 if answer.recommended else 1
