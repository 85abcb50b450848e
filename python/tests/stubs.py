#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the type stub of the compiled module: python/tests/stubs.py >python/veskar/_veskar.pyi

The types stand in the docstrings that pybind11 writes. A test compares the result with the file.
"""

import inspect
import re

from veskar import _veskar

HEADER = '''# SPDX-License-Identifier: Apache-2.0
# Written by python/tests/stubs.py.
import os
from typing import AbstractSet, Any, Callable, ClassVar, Mapping, NoReturn, Sequence, TypeVar

import numpy as np
from numpy.typing import ArrayLike, NDArray

from .observer import FusionObserver

_Self = TypeVar("_Self")
_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]

__version__: str
KNOWN_CLASSES: frozenset[str]
SUPPORTED_CLASSES: frozenset[str]
KNOWN_COLORS: frozenset[str]
CLASS_GROUPS: dict[str, str]
UNKNOWN: str

class InputError(ValueError):
    file: str | None
    line: int | None
    key: str | None
    reason: str
'''
# What C++ leaves to Python.
SIGNATURES = {
    "sensor_to_system_cost_matrix": "tuple[NDArray[np.float64], NDArray[np.bool_], NDArray[np.bool_]]",
    "system_to_system_cost_matrix": "tuple[NDArray[np.float64], NDArray[np.bool_]]",
    "sensor_to_system_association": "tuple[list[tuple[int, int]], set[int]]",
    "to_dict": "dict[str, Any]",
    "_evaluate": "dict[str, Any]",
    "_replay": "dict[str, Any]",
    "_calibrate": "dict[str, Any]",
    "_check": "list[tuple[str, int, str, str, str, str]]",
    "_judge_arrays": "tuple[dict[str, float], list[tuple[float, ...]]]",
    "_read_results": "dict[str, Any]",
    "next": "dict[str, Any]",
}
ARGUMENTS = {
    "path: object": "path: _Path",
    "clock: object = None": "clock: Callable[[], float] | None = None",
    "base: object = None": "base: Config | None = None",
    "values: dict": "values: Mapping[str, Any]",
    "arg6: dict": "arg6: Mapping[str, Any]",
}
ATTRIBUTES = {"observer": "FusionObserver | None", "resolution": "Sequence[int]"}
ARRAYS = {"float64": "NDArray[np.float64]", "int32": "NDArray[np.int32]", "bool": "NDArray[np.bool_]"}
ARRAY = re.compile(r"numpy\.ndarray\[(?:numpy\.)?(\w+)(?:\[[^\]]*\])?(?:, [^\]]*)?\]")
HIDDEN = {"__init__", "__eq__", "__ne__", "__repr__", "__str__", "__reduce__", "__getstate__", "__setstate__",
          "__hash__"}


def split(text):
    """Parts between commas outside brackets."""
    depth, parts = 0, [""]
    for letter in text:
        depth += (letter in "([{<") - (letter in ")]}>")
        if letter == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += letter
    return [part.strip() for part in parts if part.strip()]


def generic(text, name, form):
    """Rewrites name[A, B] to form of the parts."""
    while (found := re.search(rf"\b{name}\[", text)):
        depth, end = 1, found.end()
        while depth:
            depth += (text[end] == "[") - (text[end] == "]")
            end += 1
        text = text[:found.start()] + form(split(text[found.end():end - 1])) + text[end:]
    return text


def type_of(text, is_argument=False):
    text = text.replace("veskar._veskar.", "")
    text = ARRAY.sub(lambda array: "ArrayLike" if is_argument else ARRAYS[array[1]], text)
    text = generic(text, "Optional", lambda parts: parts[0] + " | None")
    text = generic(text, "Union", " | ".join)
    for name, new in (("List", "Sequence" if is_argument else "list"), ("Tuple", "tuple"),
                      ("Dict", "Mapping" if is_argument else "dict"),
                      ("Set", "AbstractSet" if is_argument else "set")):
        text = re.sub(rf"\b{name}\[", f"{new}[", text)
    return text


def wrapped(indent, start, arguments, end):
    """A definition on one line, or with an argument per line."""
    line = f"{indent}{start}({', '.join(arguments)}){end}"
    if len(line) <= 100:
        return [line]
    return [f"{indent}{start}(", *(f"{indent}    {argument}," for argument in arguments), f"{indent}){end}"]


def function(name, doc, indent="", is_method=False):
    """The stub of a function, of the first line of its docstring."""
    parts = re.match(r"\w+\((.*)\) -> (.*)", doc.splitlines()[0])
    arguments = split(parts[1])
    written = ["self"] if is_method else []
    for argument in arguments[is_method:]:
        if argument.startswith("*"):
            written.append(argument if argument == "*" else f"{argument}: object")
            continue
        declared, _, default = argument.partition(" = ")
        key, _, kind = declared.partition(": ")
        text = f"{key}: {type_of(kind, True)}"
        if default == "None" and not text.endswith(("None", "object")):
            text += " | None"
        if default:
            is_literal = re.fullmatch(r"None|True|False|-?[\d.]+|'[^']*'", default)
            text += f" = {default if is_literal else '...'}"
        written.append(ARGUMENTS.get(text, text))
    result = SIGNATURES.get(name, type_of(parts[2]))
    return wrapped(indent, f"def {name}", written, f" -> {result}: ...")


def enumeration(cls, indent):
    qualified = cls.__qualname__
    yield from (f"{indent}{name}: ClassVar[{qualified}]" for name in cls.__members__)
    yield f"{indent}__members__: ClassVar[dict[str, {qualified}]]"
    yield f"{indent}def __init__(self, value: int) -> None: ..."
    for name, kind in (("name", "str"), ("value", "int")):
        yield f"{indent}@property"
        yield f"{indent}def {name}(self) -> {kind}: ..."
    for name in ("__int__", "__index__", "__hash__"):
        yield f"{indent}def {name}(self) -> int: ..."


def attribute_type(member, name):
    result = re.match(r"\(.*?\) -> (.*)", member.fget.__doc__.strip())[1]
    return ATTRIBUTES.get(name, type_of(result))


def body(cls, indent):
    members = vars(cls)
    for member in members.values():
        if inspect.isclass(member) and member.__module__ == _veskar.__name__:
            yield from described(member, indent)
    fields = members.get("_fields")
    if fields is not None:
        yield f"{indent}_fields: ClassVar[tuple[str, ...]]"
    for name, member in members.items():
        if isinstance(member, property) and member.fset is None:
            yield f"{indent}@property"
            yield f"{indent}def {name}(self) -> {attribute_type(member, name)}: ..."
        elif isinstance(member, property):
            yield f"{indent}{name}: {attribute_type(member, name)}"
    if fields is not None:
        values = [f"{name}: {as_argument(attribute_type(getattr(cls, name), name))} = ..." for name in fields]
        yield from wrapped(indent, "def __init__", ["self", "*", *values], " -> None: ...")
    elif " -> " in (members["__init__"].__doc__ or ""):
        yield from function("__init__", members["__init__"].__doc__, indent, True)
    else:
        yield f"{indent}def __init__(self, *args: object, **kwargs: object) -> NoReturn: ..."
    for name, member in members.items():
        if name == "__enter__":
            yield f"{indent}def __enter__(self: _Self) -> _Self: ..."
        elif name == "__exit__":
            yield f"{indent}def __exit__(self, *args: object) -> None: ..."
        elif name == "__iter__":
            yield f"{indent}def __iter__(self: _Self) -> _Self: ..."
        elif isinstance(member, staticmethod):
            yield f"{indent}@staticmethod"
            yield from function(name, member.__func__.__doc__, indent)
        elif name not in HIDDEN and callable(member) and not inspect.isclass(member):
            yield from function(name, member.__doc__, indent, True)


def as_argument(kind):
    kind = re.sub(r"NDArray\[[\w.]*\]", "ArrayLike", kind)
    return kind.replace("list[", "Sequence[").replace("dict[", "Mapping[").replace("set[", "AbstractSet[")


def described(cls, indent=""):
    bases = [base.__name__ for base in cls.__bases__ if base.__module__ == _veskar.__name__]
    yield f"{indent}class {cls.__name__}" + (f"({', '.join(bases)})" if bases else "") + ":"
    inner = indent + "    "
    yield from enumeration(cls, inner) if hasattr(cls, "__members__") else body(cls, inner)
    yield ""


def stub():
    yield HEADER
    members = {name: member for name, member in vars(_veskar).items() if name != "InputError"}
    for member in members.values():
        if inspect.isclass(member):
            yield from described(member)
    for name, member in members.items():
        if inspect.isroutine(member):
            yield from function(name, member.__doc__)


if __name__ == "__main__":
    print("\n".join(stub()))
