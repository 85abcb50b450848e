# SPDX-License-Identifier: Apache-2.0
"""Fuses the object tracks of a radar and a video camera into one list of system tracks.

The core, on estimates with covariance: Config, Track, FusionModule, TrackAssociator, Camera, and
FusionObserver for what the fusion decides.

The workbench: simulate, read_recording, replay, evaluate, check, report; map for all cores.

veskar.metrics: GOSPA, OSPA, HOTA, CLEAR MOT and identity of any tracker.

Positions on the ground are metres in the device's frame (x forward, y to the left), times seconds,
image positions on the normalised image plane (-1..1, right and up).
"""

from . import metrics
from ._veskar import (
    Camera,
    Candidate,
    ClassVerdict,
    Config,
    ConfigFault,
    Continuation,
    CoordinateSystem,
    DeletionReason,
    FusionModule,
    Gate,
    GateVerdict,
    GatingResult,
    Hindrance,
    InputError,
    Link,
    MergeCandidate,
    MergeHindrance,
    ObservedFrame,
    PairMemory,
    Pruning,
    PruningReason,
    Refusal,
    Source,
    SystemTrack,
    Track,
    TrackAssociator,
    __version__,
    constant_velocity,
    find_faults,
    from_pixels,
    to_pixels,
    vocabulary,
)
from .observer import FusionObserver
from .parallel import map
from .workbench import (
    Finding,
    Metrics,
    Recording,
    Run,
    check,
    evaluate,
    read_recording,
    replay,
    report,
    simulate,
)
