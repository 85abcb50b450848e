# SPDX-License-Identifier: Apache-2.0
"""Where the trials of a search are kept: a file of one search, or a database of many workers."""

from __future__ import annotations

import contextlib
import threading
import warnings
from collections.abc import Iterator

import optuna
import sqlalchemy
from optuna.trial import Trial, TrialState

from .study import StudyError

#: How often a trial whose worker died is tried again; one that kills its workers ends.
RETRIES = 3

# Of PostgreSQL's advisory locks; any number that all workers share.
_LOCK = 7_165_386_274


class Storage:
    """Trials in SQLite, which no other process uses meanwhile.

    Parameters
    ----------
    url : str
    """

    shared = False

    def __init__(self, url: str) -> None:
        _quieten()
        self.trials = optuna.storages.RDBStorage(url)

    @contextlib.contextmanager
    def alone(self) -> Iterator[None]:
        """Keep the other workers waiting."""
        yield

    def retry_lost(self, trials: optuna.Study) -> None:
        """Try again what a killed process was trying; at the start of a search."""
        for trial in trials.get_trials(states=(TrialState.RUNNING,)):
            # In this order no kill makes two of one.
            trials.tell(trial.number, state=TrialState.FAIL)
            values = {**trial.system_attrs.get("fixed_params", {}), **trial.params}
            if values:
                trials.enqueue_trial(values)

    def ask(self, trials: optuna.Study) -> Trial:
        """The next trial, which is this process's."""
        return trials.ask()

    def ask_waiting(self, trials: optuna.Study) -> Trial | None:
        """The next trial that was enqueued, or None."""
        waiting = trials.get_trials(deepcopy=False, states=(TrialState.WAITING,))
        return trials.ask() if waiting else None

    @contextlib.contextmanager
    def held(self, trial: Trial) -> Iterator[None]:
        """Keep a trial this process's while it is evaluated."""
        yield


class SharedStorage(Storage):
    """Trials in PostgreSQL, for any number of workers.

    Parameters
    ----------
    url : str
        of SQLAlchemy, as postgresql://user@host/database
    lease : int
        s; a worker that is silent for longer is taken for dead. The same for all workers
    """

    shared = True

    def __init__(self, url: str, lease: int) -> None:
        _quieten()
        try:
            backend = sqlalchemy.engine.make_url(url).get_backend_name()
        except sqlalchemy.exc.ArgumentError as error:
            raise StudyError(f"--storage: {error}") from error
        if backend != "postgresql":
            raise StudyError(f"--storage: {backend} is not postgresql")
        self._engine = sqlalchemy.create_engine(url, poolclass=sqlalchemy.pool.NullPool)
        self._interval = max(1, lease // 4)
        with self.alone():  # the first worker makes the tables
            self.trials = optuna.storages.RDBStorage(
                url, heartbeat_interval=self._interval, grace_period=lease,
                failed_trial_callback=optuna.storages.RetryFailedTrialCallback(RETRIES))

    @contextlib.contextmanager
    def alone(self) -> Iterator[None]:
        # The server gives the lock back when the worker ends, however it does.
        with self._engine.begin() as connection:
            connection.execute(sqlalchemy.text(f"SELECT pg_advisory_xact_lock({_LOCK})"))
            yield

    def retry_lost(self, trials: optuna.Study) -> None:
        pass  # other workers are trying; `ask` tells by their heartbeats who died

    def ask(self, trials: optuna.Study) -> Trial:
        with self._asking(trials):
            return self._leased(super().ask(trials))

    def ask_waiting(self, trials: optuna.Study) -> Trial | None:
        with self._asking(trials):
            trial = super().ask_waiting(trials)
            return trial and self._leased(trial)

    @contextlib.contextmanager
    def _asking(self, trials: optuna.Study) -> Iterator[None]:
        with self.alone():  # two workers must not retry the same trial
            optuna.storages.fail_stale_trials(trials)
            yield

    def _leased(self, trial: Trial) -> Trial:
        self.trials.record_heartbeat(trial._trial_id)
        return trial

    @contextlib.contextmanager
    def held(self, trial: Trial) -> Iterator[None]:
        done = threading.Event()

        def beat() -> None:
            while not done.wait(self._interval):
                self.trials.record_heartbeat(trial._trial_id)

        thread = threading.Thread(target=beat, daemon=True)
        thread.start()
        try:
            yield
        finally:
            done.set()
            thread.join()


def _quieten() -> None:
    optuna.logging.set_verbosity(optuna.logging.WARNING)
    warnings.filterwarnings("ignore", category=optuna.exceptions.ExperimentalWarning)
    # `held` does what Study.optimize would.
    warnings.filterwarnings("ignore", "Heartbeat of storage is supposed", UserWarning)
