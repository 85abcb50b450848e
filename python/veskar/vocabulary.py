# SPDX-License-Identifier: Apache-2.0
"""The words of labels, and what the fusion knows about them.

KNOWN_CLASSES, KNOWN_COLORS : frozenset of str
    the words of object classes and colours
SUPPORTED_CLASSES : frozenset of str
    classes that take part in the fusion
CLASS_GROUPS : dict
    the group of a class; classes of one group agree
UNKNOWN : str
    stands for a label that is not known
"""

from ._veskar import (
    CLASS_GROUPS,
    KNOWN_CLASSES,
    KNOWN_COLORS,
    SUPPORTED_CLASSES,
    UNKNOWN,
    is_known_class,
    is_known_color,
    nearest_word,
)

__all__ = [
    "CLASS_GROUPS",
    "KNOWN_CLASSES",
    "KNOWN_COLORS",
    "SUPPORTED_CLASSES",
    "UNKNOWN",
    "is_known_class",
    "is_known_color",
    "nearest_word",
]
