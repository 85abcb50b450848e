# SPDX-License-Identifier: Apache-2.0
"""How records are copied and pickled."""


from typing import Any, Iterable

__all__ = ["rebuild"]


def rebuild(cls: Any, values: Iterable[Any]) -> Any:
    """Make a record of a class of the values of its fields."""
    record = cls()
    for name, value in zip(cls._fields, values):
        setattr(record, name, value)
    return record
