# SPDX-License-Identifier: Apache-2.0
"""Configurations with changes."""

from __future__ import annotations

import contextlib
import copy
import json
import os
import tempfile
from collections.abc import Iterator, Mapping
from typing import Any

import veskar


def key_in_file(key: str) -> str:
    """The key in a configuration of what `--set` names: constants of the host have a section there."""
    return key if "." in key else f"veskarHost.{key}"


def changed(base: str | None, changes: Mapping[str, Any]) -> dict[str, Any]:
    """A configuration with changes.

    Parameters
    ----------
    base : path or None
        a configuration file; None: the shipped configuration
    changes : dict
        {key: value}, as `veskar.replay` takes them

    Returns
    -------
    dict
        the document
    """
    if base is None:
        document: dict[str, Any] = json.loads(veskar.Config.defaults().to_json())
    else:
        with open(base, encoding="utf-8") as file:
            document = json.load(file)
    for key, value in changes.items():
        *sections, name = key_in_file(key).split(".")
        place: Any = document
        for section in sections:
            place = place[int(section)] if isinstance(place, list) else place.setdefault(section, {})
        place[int(name) if isinstance(place, list) else name] = copy.copy(value)
    return document


def value_in(base: str | None, key: str) -> Any:
    """The value of a key in a configuration, its default where the file has none.

    Parameters
    ----------
    base : path or None
        a configuration file; None: the shipped configuration
    key : str
        as `--set` takes it
    """
    with temporary_configuration(base, {}) as path:
        # Config.to_json leaves out sections that are all defaults.
        sections = {"host": veskar.HostParameters.load(path).to_dict(), **veskar.Config.load(path).to_dict()}
    document: Any = {f"veskar{name[0].upper()}{name[1:]}": section for name, section in sections.items()}
    for name in key_in_file(key).split("."):
        document = document[int(name) if isinstance(document, list) else name]
    return document


@contextlib.contextmanager
def temporary_configuration(base: str | None, changes: Mapping[str, Any]) -> Iterator[str]:
    """The path of a file with `changed(base, changes)`, which goes with the context."""
    with tempfile.TemporaryDirectory(prefix="veskar-") as directory:
        path = os.path.join(directory, "fusion.json")
        write(path, json.dumps(changed(base, changes)))
        yield path


def write(path: str, text: str) -> None:
    """Write a file that appears complete or not at all."""
    unfinished = f"{path}.{os.getpid()}"
    try:
        with open(unfinished, "w", encoding="utf-8") as file:
            file.write(text)
        os.replace(unfinished, path)
    except BaseException:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(unfinished)
        raise
