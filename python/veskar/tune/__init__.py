# SPDX-License-Identifier: Apache-2.0
"""The search for settings: Optuna over replays and evaluations, judged on what it has not seen.

`veskar tune` is its command; docs/tuning.md describes study documents and answers.
"""

from .study import Parameter, Scene, Study, StudyError, read_study

__all__ = ["Parameter", "Scene", "Study", "StudyError", "read_study"]
