# SPDX-License-Identifier: Apache-2.0
"""Fuses the object tracks of a radar and a video camera into one list of system tracks.

The core, on estimates with covariance: Config, Track, FusionModule, TrackAssociator, Camera, and
FusionObserver for what the fusion decides.

The host's part, on the sensors' own reports: Installation, SensorFrame, FusionPipeline.

The workbench: simulate, read_recording, replay, evaluate, calibrate, check, report; map for all
cores.

veskar.metrics: GOSPA, OSPA, HOTA, CLEAR MOT and identity of any tracker.

Positions on the ground are metres in the device's frame (x forward, y to the left), times seconds,
image positions on the normalised image plane (-1..1, right and up).
"""

from . import metrics
from ._veskar import (
    Camera,
    CameraSetup,
    Candidate,
    ClassVerdict,
    Config,
    ConfigFault,
    Continuation,
    CoordinateSystem,
    DeletionReason,
    FusedFrame,
    FusedTrack,
    FusionEstimate,
    FusionModule,
    FusionPipeline,
    Gate,
    GateVerdict,
    GatingResult,
    GeographicPosition,
    GroundEstimate,
    GroundPosition,
    Hindrance,
    HostAdapter,
    HostParameters,
    ImageBox,
    InputError,
    Installation,
    Label,
    Labels,
    Link,
    MergeCandidate,
    MergeHindrance,
    Mounting,
    ObservedFrame,
    PairMemory,
    PipelineCounts,
    Projection,
    Pruning,
    PruningReason,
    RadarModel,
    RadarReport,
    RadarSetup,
    ReadyEstimate,
    RecordingFrames,
    Refusal,
    SensorFrame,
    Site,
    Source,
    SphericalCoordinate,
    Support,
    SystemTrack,
    Track,
    TrackAssociator,
    VideoModel,
    VideoReport,
    __version__,
    constant_velocity,
    device_azimuth,
    find_faults,
    from_pixels,
    geographic_position,
    ground_point,
    is_inside_image,
    log_pdf,
    statistical_distance,
    to_fusion,
    to_pixels,
    usual_size,
    vocabulary,
)
from .observer import FusionObserver
from .parallel import map
from .workbench import (
    Calibration,
    Finding,
    Metrics,
    Recording,
    Run,
    calibrate,
    check,
    evaluate,
    read_recording,
    replay,
    report,
    simulate,
)
