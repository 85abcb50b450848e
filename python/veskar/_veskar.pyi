# SPDX-License-Identifier: Apache-2.0
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

class Source:
    VIDEO: ClassVar[Source]
    VURA: ClassVar[Source]
    RADAR: ClassVar[Source]
    SYSTEM: ClassVar[Source]
    __members__: ClassVar[dict[str, Source]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class CoordinateSystem:
    UNSPECIFIED: ClassVar[CoordinateSystem]
    GROUND_PLANE: ClassVar[CoordinateSystem]
    IMAGE_PLANE_RANGE: ClassVar[CoordinateSystem]
    __members__: ClassVar[dict[str, CoordinateSystem]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class Config:
    class VideoInput:
        _fields: ClassVar[tuple[str, ...]]
        uvCorrelation: float
        uvVelocityStd: float
        minimumPseudoRangeStd: float
        maximumPseudoRangeStd: float
        pseudoRangeDotStd: float
        minimumAngle: float
        uvPositionStd: float
        def __init__(
            self,
            *,
            uvCorrelation: float = ...,
            uvVelocityStd: float = ...,
            minimumPseudoRangeStd: float = ...,
            maximumPseudoRangeStd: float = ...,
            pseudoRangeDotStd: float = ...,
            minimumAngle: float = ...,
            uvPositionStd: float = ...,
        ) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    class FusionInputs:
        _fields: ClassVar[tuple[str, ...]]
        video: Config.VideoInput
        def __init__(self, *, video: Config.VideoInput = ...) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    class GainNegative:
        _fields: ClassVar[tuple[str, ...]]
        radar: float
        video: float
        def __init__(self, *, radar: float = ..., video: float = ...) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    class ModuleConfig:
        _fields: ClassVar[tuple[str, ...]]
        gainNegative: Config.GainNegative
        splitGating: bool
        gatingDistance: float
        positionGatingDistance: float
        velocityGatingSimilarity: float
        velocityMinGatingLimit: float
        stationaryBlockingMinSpeed: float
        stationaryBlockingMaxUVSpeed: float
        stationaryBlockingMinVideoAge: float
        trackKillTime: float
        systemTrackConfirmationLimitUpper: float
        systemTrackConfirmationLimitLower: float
        allowRadarToMultiple: bool
        useJVA: bool
        removeClassMismatches: bool
        trackedOdMotionAnalyzerMaxHistoryLength: int
        trackedOdMotionAnalyzerMinHistoryLength: int
        trackedOdMotionAnalyzerDistanceThreshold: float
        autocalibrationAgeLimit: float
        autocalibrationVideoCoastingLimit: float
        autocalibrationEdgeLimit: float
        autocalibrationVideoNearLimit: float
        autocalibrationAspectLimits: dict[str, tuple[float, float]]
        autocalibrationHumanMinAspect: float | None
        autocalibrationHumanMaxAspect: float | None
        def __init__(
            self,
            *,
            gainNegative: Config.GainNegative = ...,
            splitGating: bool = ...,
            gatingDistance: float = ...,
            positionGatingDistance: float = ...,
            velocityGatingSimilarity: float = ...,
            velocityMinGatingLimit: float = ...,
            stationaryBlockingMinSpeed: float = ...,
            stationaryBlockingMaxUVSpeed: float = ...,
            stationaryBlockingMinVideoAge: float = ...,
            trackKillTime: float = ...,
            systemTrackConfirmationLimitUpper: float = ...,
            systemTrackConfirmationLimitLower: float = ...,
            allowRadarToMultiple: bool = ...,
            useJVA: bool = ...,
            removeClassMismatches: bool = ...,
            trackedOdMotionAnalyzerMaxHistoryLength: int = ...,
            trackedOdMotionAnalyzerMinHistoryLength: int = ...,
            trackedOdMotionAnalyzerDistanceThreshold: float = ...,
            autocalibrationAgeLimit: float = ...,
            autocalibrationVideoCoastingLimit: float = ...,
            autocalibrationEdgeLimit: float = ...,
            autocalibrationVideoNearLimit: float = ...,
            autocalibrationAspectLimits: Mapping[str, tuple[float, float]] = ...,
        ) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    class PriorityConfig:
        _fields: ClassVar[tuple[str, ...]]
        vuraWidthFractionLimit: float
        vuraHeightFractionLimit: float
        vodWidthFractionLimit: float
        vodHeightFractionLimit: float
        longlivedLimit: float
        travelledDistanceLimit: float
        radarFarLimitHuman: float
        radarFarLimitVehicle: float
        nVideoFramesMissedLimitLow: int
        nVideoFramesMissedLimitHigh: int
        autoAnnotationEnabled: bool
        def __init__(
            self,
            *,
            vuraWidthFractionLimit: float = ...,
            vuraHeightFractionLimit: float = ...,
            vodWidthFractionLimit: float = ...,
            vodHeightFractionLimit: float = ...,
            longlivedLimit: float = ...,
            travelledDistanceLimit: float = ...,
            radarFarLimitHuman: float = ...,
            radarFarLimitVehicle: float = ...,
            nVideoFramesMissedLimitLow: int = ...,
            nVideoFramesMissedLimitHigh: int = ...,
            autoAnnotationEnabled: bool = ...,
        ) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    class Rules:
        _fields: ClassVar[tuple[str, ...]]
        radarKeepsSystemTrack: bool
        pairGate: float
        pairMemory: bool
        pairMemoryTime: float
        pairMemoryFreshness: float
        pairMemoryFar: float
        pairMemoryNear: float
        pairMemoryLimit: float
        pairMemoryCrowd: float
        takeOver: bool
        freshReportsOnly: bool
        coastingLimit: float
        orderedMerging: bool
        videoRangeStd: float
        radarSilence: float
        def __init__(
            self,
            *,
            radarKeepsSystemTrack: bool = ...,
            pairGate: float = ...,
            pairMemory: bool = ...,
            pairMemoryTime: float = ...,
            pairMemoryFreshness: float = ...,
            pairMemoryFar: float = ...,
            pairMemoryNear: float = ...,
            pairMemoryLimit: float = ...,
            pairMemoryCrowd: float = ...,
            takeOver: bool = ...,
            freshReportsOnly: bool = ...,
            coastingLimit: float = ...,
            orderedMerging: bool = ...,
            videoRangeStd: float = ...,
            radarSilence: float = ...,
        ) -> None: ...
        def to_dict(self) -> dict[str, Any]: ...

    _fields: ClassVar[tuple[str, ...]]
    inputs: Config.FusionInputs
    module: Config.ModuleConfig
    detectionPriority: Config.PriorityConfig
    rules: Config.Rules
    def __init__(
        self,
        *,
        inputs: Config.FusionInputs = ...,
        module: Config.ModuleConfig = ...,
        detectionPriority: Config.PriorityConfig = ...,
        rules: Config.Rules = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    @staticmethod
    def defaults() -> Config: ...
    @staticmethod
    def load(path: _Path) -> Config: ...
    @staticmethod
    def from_dict(values: Mapping[str, Any], base: Config | None = None) -> Config: ...
    def to_json(self) -> str: ...

class ConfigFault:
    class Effect:
        REFUSED: ClassVar[ConfigFault.Effect]
        REPLACED: ClassVar[ConfigFault.Effect]
        IGNORED: ClassVar[ConfigFault.Effect]
        __members__: ClassVar[dict[str, ConfigFault.Effect]]
        def __init__(self, value: int) -> None: ...
        @property
        def name(self) -> str: ...
        @property
        def value(self) -> int: ...
        def __int__(self) -> int: ...
        def __index__(self) -> int: ...
        def __hash__(self) -> int: ...

    @property
    def effect(self) -> ConfigFault.Effect: ...
    @property
    def line(self) -> int: ...
    @property
    def key(self) -> str: ...
    @property
    def value(self) -> str: ...
    @property
    def reason(self) -> str: ...
    def __init__(self, *args: object, **kwargs: object) -> NoReturn: ...

class Camera:
    class RangeToTarget:
        @property
        def clamped(self) -> bool: ...
        @property
        def range(self) -> float: ...
        def __init__(self, *args: object, **kwargs: object) -> NoReturn: ...

    resolution: Sequence[int]
    sensor_offset: NDArray[np.float64]
    position: NDArray[np.float64]
    @property
    def rotation(self) -> NDArray[np.float64]: ...
    @property
    def field_of_view(self) -> NDArray[np.float64]: ...
    @property
    def aspect_ratio(self) -> float: ...
    @property
    def is_pinhole(self) -> bool: ...
    def __init__(
        self,
        image_size: ArrayLike,
        optical_centre: ArrayLike,
        image_to_radians: ArrayLike,
        radians_to_image: ArrayLike,
        half_angles: ArrayLike,
        is_pinhole: bool,
    ) -> None: ...
    @staticmethod
    def parse(json: str) -> Camera: ...
    def set_rotation(self, yaw: float, pitch: float, roll: float) -> None: ...
    def image_to_radians(self, radius: float) -> float: ...
    def radians_to_image(self, angle: float) -> float: ...
    def range_to_target(self, x: float, y: float, minimum_angle: float) -> Camera.RangeToTarget: ...
    def range_to_target_uncertainty(
        self,
        y: float,
        minimum_angle: float,
        y_std: float,
    ) -> Camera.RangeToTarget: ...

class SphericalCoordinate:
    _fields: ClassVar[tuple[str, ...]]
    range: float
    azimuth: float
    elevation: float
    def __init__(
        self,
        *,
        range: float = ...,
        azimuth: float = ...,
        elevation: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class GeographicPosition:
    _fields: ClassVar[tuple[str, ...]]
    latitude: float
    longitude: float
    altitude: float
    valid: bool
    def __init__(
        self,
        *,
        latitude: float = ...,
        longitude: float = ...,
        altitude: float = ...,
        valid: bool = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Track:
    state: NDArray[np.float64]
    covariance: NDArray[np.float64]
    bounding_box: NDArray[np.float64]
    start_position: NDArray[np.float64]
    time: float
    start_time: float
    id: int
    source: Source
    coordinate_system: CoordinateSystem
    class_name: str
    class_probability: float
    color_name: str
    color_probability: float
    upper_clothing_color_name: str
    upper_clothing_color_probability: float
    lower_clothing_color_name: str
    lower_clothing_color_probability: float
    coasting_time: float
    probability: float
    speed: float | None
    direction: NDArray[np.float64] | None
    location: SphericalCoordinate | None
    geo_location: GeographicPosition | None
    is_confident: bool
    def __init__(
        self,
        state: ArrayLike,
        covariance: ArrayLike,
        time: float,
        id: int,
        source: Source,
        *,
        probability: float,
        class_name: str = 'unknown',
        class_probability: float = 0.0,
        bounding_box: ArrayLike = ...,
        coasting_time: float = 0.0,
        coordinate_system: CoordinateSystem = ...,
    ) -> None: ...
    def predict(self, time: float) -> None: ...
    def travelled_distance(self) -> float: ...
    def statistical_distance(self, other: Track) -> float: ...
    def position_statistical_distance(self, other: Track) -> float: ...
    def log_pdf(self, other: Track) -> float: ...
    def velocity_similarity(self, other: Track, minimum_speed_sum: float) -> tuple[bool, float]: ...
    def age(self) -> float: ...
    def label(self) -> str: ...
    def get_class_probability(self) -> float: ...
    def get_color_name(self) -> str: ...
    def get_color_probability(self) -> float: ...
    def get_upper_clothing_color_name(self) -> str: ...
    def get_upper_clothing_color_probability(self) -> float: ...
    def get_lower_clothing_color_name(self) -> str: ...
    def get_lower_clothing_color_probability(self) -> float: ...
    def get_speed(self) -> float | None: ...
    def get_direction(self) -> NDArray[np.float64] | None: ...
    def get_location(self) -> SphericalCoordinate | None: ...
    def get_geo_location(self) -> GeographicPosition | None: ...

class SystemTrack(Track):
    @property
    def track_probability(self) -> float: ...
    @property
    def is_confirmed(self) -> bool: ...
    @property
    def system_start_time(self) -> float: ...
    @property
    def track_probability_history(self) -> list[float]: ...
    @property
    def sensor_tracks(self) -> dict[Source, dict[int, Track]]: ...
    def __init__(self, track: Track, id: int) -> None: ...
    def has_tracks(self, source: Source) -> bool: ...
    def has_coasting_tracks(self, source: Source) -> bool: ...
    def update_state(self, track: Track) -> None: ...
    def update_track_probability(self, gain: float) -> None: ...
    def apply_defusion(self, track: Track) -> None: ...
    def remove_track(self, source: Source, id: int) -> None: ...
    def has_coasting_tracks_too_long(self, source: Source, limit: float) -> bool: ...
    def update_class(self, track: Track) -> None: ...
    def update_color(self, track: Track) -> None: ...
    def update_upper_clothing_color(self, track: Track) -> None: ...
    def update_lower_clothing_color(self, track: Track) -> None: ...
    def update_is_confident(self) -> None: ...
    def update_origin_and_start_time(self) -> None: ...
    def prune(self) -> None: ...

class GatingResult:
    @property
    def distance(self) -> float: ...
    @property
    def passed(self) -> bool: ...
    def __init__(self, *args: object, **kwargs: object) -> NoReturn: ...

class TrackAssociator:
    def __init__(self, config: Config) -> None: ...
    def check_gating(self, system_track: Track, sensor_track: Track) -> GatingResult: ...
    def is_supported_class(self, track: Track) -> bool: ...
    def have_matching_classes(
        self,
        system_track: SystemTrack,
        track: Track,
        source: Source,
    ) -> bool: ...
    def sensor_to_system_cost_matrix(
        self,
        sensor_tracks: Sequence[Track],
        system_tracks: Sequence[SystemTrack],
        source: Source,
    ) -> tuple[NDArray[np.float64], NDArray[np.bool_], NDArray[np.bool_]]: ...
    def system_to_system_cost_matrix(
        self,
        system_tracks: Sequence[SystemTrack],
        excluded_ids: AbstractSet[int] = ...,
    ) -> tuple[NDArray[np.float64], NDArray[np.bool_]]: ...
    def sensor_to_system_association(
        self,
        sensor_tracks: Sequence[Track],
        system_tracks: Sequence[SystemTrack],
        source: Source,
    ) -> tuple[list[tuple[int, int]], set[int]]: ...
    def system_to_system_association(
        self,
        system_tracks: Sequence[SystemTrack],
        excluded_ids: AbstractSet[int] = ...,
    ) -> list[tuple[int, int]]: ...
    def is_occupied(self, track: Track, system_tracks: Sequence[SystemTrack]) -> bool: ...
    @staticmethod
    def run_jva(cost: ArrayLike, allowed: ArrayLike | None = None) -> list[tuple[int, int]]: ...

class GateVerdict:
    PASSED: ClassVar[GateVerdict]
    TOO_FAR: ClassVar[GateVerdict]
    VELOCITY_DIFFERS: ClassVar[GateVerdict]
    STANDS_STILL: ClassVar[GateVerdict]
    CLASS_NOT_SUPPORTED: ClassVar[GateVerdict]
    __members__: ClassVar[dict[str, GateVerdict]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class ClassVerdict:
    NOT_COMPARED: ClassVar[ClassVerdict]
    MATCH: ClassVar[ClassVerdict]
    MISMATCH: ClassVar[ClassVerdict]
    __members__: ClassVar[dict[str, ClassVerdict]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class Refusal:
    NONE: ClassVar[Refusal]
    OUTSIDE_GATE: ClassVar[Refusal]
    PAIR_TOO_FAR: ClassVar[Refusal]
    PAIR_DISAGREES: ClassVar[Refusal]
    CLASS_MISMATCH: ClassVar[Refusal]
    __members__: ClassVar[dict[str, Refusal]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class Hindrance:
    NONE: ClassVar[Hindrance]
    REPORT_COASTS: ClassVar[Hindrance]
    SEEN_BESIDE_HELD: ClassVar[Hindrance]
    __members__: ClassVar[dict[str, Hindrance]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class MergeHindrance:
    NONE: ClassVar[MergeHindrance]
    SAME_START: ClassVar[MergeHindrance]
    PAIR_UNKNOWN: ClassVar[MergeHindrance]
    PAIR_DISAGREES: ClassVar[MergeHindrance]
    __members__: ClassVar[dict[str, MergeHindrance]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class PruningReason:
    COASTED: ClassVar[PruningReason]
    REFUSED: ClassVar[PruningReason]
    PARTNER_REFUSED: ClassVar[PruningReason]
    TAKEN_OVER: ClassVar[PruningReason]
    __members__: ClassVar[dict[str, PruningReason]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class DeletionReason:
    NO_SENSOR_TRACKS: ClassVar[DeletionReason]
    MERGED: ClassVar[DeletionReason]
    RADAR_COPY: ClassVar[DeletionReason]
    __members__: ClassVar[dict[str, DeletionReason]]
    def __init__(self, value: int) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...

class ObservedFrame:
    _fields: ClassVar[tuple[str, ...]]
    source: Source
    timestamp: float
    sensor_tracks: int
    system_tracks: int
    def __init__(
        self,
        *,
        source: Source = ...,
        timestamp: float = ...,
        sensor_tracks: int = ...,
        system_tracks: int = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Gate:
    _fields: ClassVar[tuple[str, ...]]
    distance: float
    limit: float
    velocity_similarity: float | None
    similarity_limit: float
    verdict: GateVerdict
    def __init__(
        self,
        *,
        distance: float = ...,
        limit: float = ...,
        velocity_similarity: float | None = ...,
        similarity_limit: float = ...,
        verdict: GateVerdict = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class PairMemory:
    _fields: ClassVar[tuple[str, ...]]
    squared_distance: float
    rivals: float
    disagrees: bool
    def __init__(
        self,
        *,
        squared_distance: float = ...,
        rivals: float = ...,
        disagrees: bool = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Continuation:
    _fields: ClassVar[tuple[str, ...]]
    system_track_id: int
    source: Source
    sensor_track_id: int
    gate: Gate
    class_verdict: ClassVerdict
    refused: bool
    refusal: Refusal
    pair_distance: float | None
    def __init__(
        self,
        *,
        system_track_id: int = ...,
        source: Source = ...,
        sensor_track_id: int = ...,
        gate: Gate = ...,
        class_verdict: ClassVerdict = ...,
        refused: bool = ...,
        refusal: Refusal = ...,
        pair_distance: float | None = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Candidate:
    _fields: ClassVar[tuple[str, ...]]
    system_track_id: int
    source: Source
    sensor_track_id: int
    gate: Gate
    class_verdict: ClassVerdict
    allowed: bool
    hindrance: Hindrance
    def __init__(
        self,
        *,
        system_track_id: int = ...,
        source: Source = ...,
        sensor_track_id: int = ...,
        gate: Gate = ...,
        class_verdict: ClassVerdict = ...,
        allowed: bool = ...,
        hindrance: Hindrance = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class MergeCandidate:
    _fields: ClassVar[tuple[str, ...]]
    older_id: int
    younger_id: int
    gate: Gate
    excluded: bool
    hindrance: MergeHindrance
    memory: PairMemory | None
    def __init__(
        self,
        *,
        older_id: int = ...,
        younger_id: int = ...,
        gate: Gate = ...,
        excluded: bool = ...,
        hindrance: MergeHindrance = ...,
        memory: PairMemory | None = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Link:
    _fields: ClassVar[tuple[str, ...]]
    system_track_id: int
    source: Source
    sensor_track_id: int
    def __init__(
        self,
        *,
        system_track_id: int = ...,
        source: Source = ...,
        sensor_track_id: int = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Pruning:
    _fields: ClassVar[tuple[str, ...]]
    system_track_id: int
    source: Source
    sensor_track_id: int
    coasting_time: float
    reason: PruningReason
    def __init__(
        self,
        *,
        system_track_id: int = ...,
        source: Source = ...,
        sensor_track_id: int = ...,
        coasting_time: float = ...,
        reason: PruningReason = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class FusionModule:
    @property
    def system_tracks(self) -> list[SystemTrack]: ...
    observer: FusionObserver | None
    def __init__(self, config: Config, clock: Callable[[], float] | None = None) -> None: ...
    def cycle(self, source: Source, timestamp: float, tracks: Sequence[Track]) -> None: ...
    def cycle_frame(self, source: Source, timestamp: float, tracks: Sequence[Track]) -> None: ...
    def is_far_in_time(self, timestamp: float) -> bool: ...
    def waits_for_video(self, timestamp: float) -> bool: ...
    def clear(self) -> None: ...
    def predict_tracks(self, timestamp: float) -> None: ...
    def update(self, source: Source, tracks: Sequence[Track]) -> None: ...
    def initialize(self, track: Track) -> None: ...
    def management(self) -> None: ...
    def merge(self, target: SystemTrack, other: SystemTrack) -> None: ...
    def tracked_od_has_motion(self, id: int, u: float, v: float) -> bool: ...
    def close(self) -> None: ...
    def __enter__(self: _Self) -> _Self: ...
    def __exit__(self, *args: object) -> None: ...

class HostParameters:
    _fields: ClassVar[tuple[str, ...]]
    radarGain: float
    videoGain: float
    tentativeGain: float
    coastingGain: float
    predictedGain: float
    radarFloorStd: NDArray[np.float64]
    pseudoRangeStdPerRange: float
    rangeStdPerRate: float
    groundSlopeStd: float
    cutBoxStd: float
    unknownImageVelocityStd: float
    unknownTangentialSpeedStd: float
    predictedAccelerationStd: float
    humanSpeedLimit: float
    classFromSpeedProbability: float
    videoSilence: float
    slowInterval: float
    predictionInterval: float
    nominalInterval: float
    belief: float
    longestBelief: float
    longestGap: float
    def __init__(
        self,
        *,
        radarGain: float = ...,
        videoGain: float = ...,
        tentativeGain: float = ...,
        coastingGain: float = ...,
        predictedGain: float = ...,
        radarFloorStd: ArrayLike = ...,
        pseudoRangeStdPerRange: float = ...,
        rangeStdPerRate: float = ...,
        groundSlopeStd: float = ...,
        cutBoxStd: float = ...,
        unknownImageVelocityStd: float = ...,
        unknownTangentialSpeedStd: float = ...,
        predictedAccelerationStd: float = ...,
        humanSpeedLimit: float = ...,
        classFromSpeedProbability: float = ...,
        videoSilence: float = ...,
        slowInterval: float = ...,
        predictionInterval: float = ...,
        nominalInterval: float = ...,
        belief: float = ...,
        longestBelief: float = ...,
        longestGap: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    @staticmethod
    def defaults() -> HostParameters: ...
    @staticmethod
    def load(path: _Path) -> HostParameters: ...

class Mounting:
    _fields: ClassVar[tuple[str, ...]]
    position: NDArray[np.float64]
    yaw: float
    pitch: float
    roll: float
    def __init__(
        self,
        *,
        position: ArrayLike = ...,
        yaw: float = ...,
        pitch: float = ...,
        roll: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class CameraSetup:
    _fields: ClassVar[tuple[str, ...]]
    mounting: Mounting
    bdc: bool
    resolution: Sequence[int]
    sensor_offset: NDArray[np.float64]
    image_to_radians: NDArray[np.float64]
    radians_to_image: NDArray[np.float64]
    field_of_view: NDArray[np.float64]
    def __init__(
        self,
        *,
        mounting: Mounting = ...,
        bdc: bool = ...,
        resolution: Sequence[int] = ...,
        sensor_offset: ArrayLike = ...,
        image_to_radians: ArrayLike = ...,
        radians_to_image: ArrayLike = ...,
        field_of_view: ArrayLike = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    def build(self) -> Camera: ...

class RadarSetup:
    _fields: ClassVar[tuple[str, ...]]
    mounting: Mounting
    range_std: float
    azimuth_std: float
    velocity_std: float
    field_of_view: float
    maximum_range: float
    def __init__(
        self,
        *,
        mounting: Mounting = ...,
        range_std: float = ...,
        azimuth_std: float = ...,
        velocity_std: float = ...,
        field_of_view: float = ...,
        maximum_range: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Site:
    _fields: ClassVar[tuple[str, ...]]
    latitude: float
    longitude: float
    heading: float
    def __init__(
        self,
        *,
        latitude: float = ...,
        longitude: float = ...,
        heading: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Installation:
    _fields: ClassVar[tuple[str, ...]]
    camera: CameraSetup
    radar: RadarSetup
    site: Site | None
    def __init__(
        self,
        *,
        camera: CameraSetup = ...,
        radar: RadarSetup = ...,
        site: Site | None = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    @staticmethod
    def load(path: _Path) -> Installation: ...
    @staticmethod
    def parse(text: str) -> Installation: ...

class Label:
    _fields: ClassVar[tuple[str, ...]]
    name: str
    probability: float
    def __init__(self, *, name: str = ..., probability: float = ...) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class Labels:
    _fields: ClassVar[tuple[str, ...]]
    object_class: Label
    color: Label
    upper_clothing_color: Label
    lower_clothing_color: Label
    def __init__(
        self,
        *,
        object_class: Label = ...,
        color: Label = ...,
        upper_clothing_color: Label = ...,
        lower_clothing_color: Label = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class ImageBox:
    _fields: ClassVar[tuple[str, ...]]
    left: float
    bottom: float
    right: float
    top: float
    def __init__(
        self,
        *,
        left: float = ...,
        bottom: float = ...,
        right: float = ...,
        top: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class VideoReport:
    _fields: ClassVar[tuple[str, ...]]
    id: int
    coasting: float
    confirmed: bool
    box: ImageBox
    velocity: NDArray[np.float64] | None
    age: float
    labels: Labels
    def __init__(
        self,
        *,
        id: int = ...,
        coasting: float = ...,
        confirmed: bool = ...,
        box: ImageBox = ...,
        velocity: ArrayLike | None = ...,
        age: float = ...,
        labels: Labels = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class RadarReport:
    _fields: ClassVar[tuple[str, ...]]
    id: int
    coasting: float
    confirmed: bool
    range: float
    azimuth: float
    speed: float | None
    direction: float | None
    radial_speed: float | None
    object_class: Label
    def __init__(
        self,
        *,
        id: int = ...,
        coasting: float = ...,
        confirmed: bool = ...,
        range: float = ...,
        azimuth: float = ...,
        speed: float | None = ...,
        direction: float | None = ...,
        radial_speed: float | None = ...,
        object_class: Label = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class ReadyEstimate:
    _fields: ClassVar[tuple[str, ...]]
    id: int
    coasting: float
    confirmed: bool
    state: NDArray[np.float64]
    covariance: NDArray[np.float64]
    box: ImageBox | None
    labels: Labels
    def __init__(
        self,
        *,
        id: int = ...,
        coasting: float = ...,
        confirmed: bool = ...,
        state: ArrayLike = ...,
        covariance: ArrayLike = ...,
        box: ImageBox | None = ...,
        labels: Labels = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class SensorFrame:
    _fields: ClassVar[tuple[str, ...]]
    source: Source
    time: float
    received: float
    tracks: list[VideoReport | RadarReport | ReadyEstimate]
    def __init__(
        self,
        *,
        source: Source = ...,
        time: float = ...,
        received: float = ...,
        tracks: Sequence[VideoReport | RadarReport | ReadyEstimate] = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    def to_json_line(self) -> str: ...
    @staticmethod
    def parse(line: str) -> SensorFrame: ...

class Support:
    _fields: ClassVar[tuple[str, ...]]
    source: Source
    id: int
    coasting: float
    def __init__(self, *, source: Source = ..., id: int = ..., coasting: float = ...) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class GroundPosition:
    _fields: ClassVar[tuple[str, ...]]
    position: NDArray[np.float64]
    covariance: NDArray[np.float64]
    velocity: NDArray[np.float64]
    velocity_covariance: NDArray[np.float64]
    def __init__(
        self,
        *,
        position: ArrayLike = ...,
        covariance: ArrayLike = ...,
        velocity: ArrayLike = ...,
        velocity_covariance: ArrayLike = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class FusedTrack:
    _fields: ClassVar[tuple[str, ...]]
    id: int
    confirmed: bool
    probability: float
    image: NDArray[np.float64]
    image_rate: NDArray[np.float64]
    range: float
    range_rate: float
    ground: GroundPosition | None
    speed: float | None
    direction: float | None
    labels: Labels
    box: ImageBox
    geo: GeographicPosition | None
    age: float
    sensors: list[Support]
    tags: set[str] | None
    def __init__(
        self,
        *,
        id: int = ...,
        confirmed: bool = ...,
        probability: float = ...,
        image: ArrayLike = ...,
        image_rate: ArrayLike = ...,
        range: float = ...,
        range_rate: float = ...,
        ground: GroundPosition | None = ...,
        speed: float | None = ...,
        direction: float | None = ...,
        labels: Labels = ...,
        box: ImageBox = ...,
        geo: GeographicPosition | None = ...,
        age: float = ...,
        sensors: Sequence[Support] = ...,
        tags: AbstractSet[str] | None = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class FusedFrame:
    _fields: ClassVar[tuple[str, ...]]
    time: float
    received: float
    source: Source
    tracks: list[FusedTrack]
    def __init__(
        self,
        *,
        time: float = ...,
        received: float = ...,
        source: Source = ...,
        tracks: Sequence[FusedTrack] = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    def to_json_line(self) -> str: ...

class Projection:
    def __init__(self, camera: Camera) -> None: ...
    def position(self, point: ArrayLike) -> NDArray[np.float64]: ...
    def sees(self, point: ArrayLike) -> bool: ...
    def ray(self, u: float, v: float) -> NDArray[np.float64]: ...
    def ground_point(self, u: float, v: float, range: float) -> NDArray[np.float64] | None: ...

class GroundEstimate:
    _fields: ClassVar[tuple[str, ...]]
    state: NDArray[np.float64]
    covariance: NDArray[np.float64]
    def __init__(self, *, state: ArrayLike = ..., covariance: ArrayLike = ...) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...
    def predicted(self, dt: float, acceleration_std: float) -> GroundEstimate: ...

class FusionEstimate:
    _fields: ClassVar[tuple[str, ...]]
    state: NDArray[np.float64]
    covariance: NDArray[np.float64]
    def __init__(self, *, state: ArrayLike = ..., covariance: ArrayLike = ...) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class RadarModel:
    def __init__(self, setup: RadarSetup, parameters: HostParameters = ...) -> None: ...
    def estimate(self, report: RadarReport) -> GroundEstimate: ...
    def ground_point(self, range: float, azimuth: float) -> NDArray[np.float64]: ...

class VideoModel:
    def __init__(
        self,
        camera: Camera,
        noise: Config.VideoInput,
        parameters: HostParameters = ...,
    ) -> None: ...
    def estimate(self, box: ImageBox, velocity: ArrayLike | None = None) -> FusionEstimate: ...

class PipelineCounts:
    _fields: ClassVar[tuple[str, ...]]
    video_frames: int
    radar_frames: int
    ignored_frames: int
    added_frames: int
    failed_frames: int
    first_failure: str
    fusion_seconds: float
    def __init__(
        self,
        *,
        video_frames: int = ...,
        radar_frames: int = ...,
        ignored_frames: int = ...,
        added_frames: int = ...,
        failed_frames: int = ...,
        first_failure: str = ...,
        fusion_seconds: float = ...,
    ) -> None: ...
    def to_dict(self) -> dict[str, Any]: ...

class HostAdapter:
    def __init__(
        self,
        installation: Installation,
        config: Config,
        parameters: HostParameters = ...,
    ) -> None: ...
    def convert(
        self,
        frame: SensorFrame,
        uptime: float = 0.0,
        ahead: float = 0.0,
        slow_interval: float = 0.0,
    ) -> list[Track]: ...

class FusionPipeline:
    @property
    def counts(self) -> PipelineCounts: ...
    @property
    def system_tracks(self) -> list[SystemTrack]: ...
    observer: FusionObserver | None
    def __init__(
        self,
        installation: Installation,
        config: Config | None = None,
        parameters: HostParameters | None = None,
        *,
        tags: bool = False,
        uptime: float = 100.0,
        asks_for_position: bool = False,
    ) -> None: ...
    def push(self, frame: SensorFrame) -> list[FusedFrame]: ...
    def advance(self, now: float) -> list[FusedFrame]: ...
    def close(self) -> None: ...
    def __enter__(self: _Self) -> _Self: ...
    def __exit__(self, *args: object) -> None: ...

class _RecordingRows:
    def __init__(self, path: str, truth: bool) -> None: ...
    def header(self) -> str: ...
    def next(self, rows: int) -> dict[str, Any]: ...

class RecordingFrames:
    @property
    def end(self) -> float | None: ...
    def __init__(self, path: str) -> None: ...
    def __iter__(self: _Self) -> _Self: ...
    def __next__(self) -> SensorFrame: ...

class _FusedRows:
    def __init__(self, path: str) -> None: ...
    def next(self, rows: int) -> dict[str, Any]: ...

def is_known_class(word: str) -> bool: ...
def is_known_color(word: str) -> bool: ...
def nearest_word(word: str, words: Sequence[str]) -> str: ...
def find_faults(json: str) -> list[ConfigFault]: ...
def to_pixels(box: ArrayLike, camera: Camera) -> NDArray[np.float64]: ...
def from_pixels(box: ArrayLike, camera: Camera) -> NDArray[np.float64]: ...
def is_inside_image(u: float, v: float) -> bool: ...
def constant_velocity(dt: float) -> NDArray[np.float64]: ...
def statistical_distance(
    state1: ArrayLike,
    covariance1: ArrayLike,
    state2: ArrayLike,
    covariance2: ArrayLike,
) -> float: ...
def log_pdf(
    state1: ArrayLike,
    covariance1: ArrayLike,
    state2: ArrayLike,
    covariance2: ArrayLike,
) -> float: ...
def to_fusion(projection: Projection, ground: GroundEstimate) -> FusionEstimate: ...
def usual_size(class_name: str) -> NDArray[np.float64]: ...
def device_azimuth(ground: ArrayLike) -> float: ...
def geographic_position(site: Site, ground: ArrayLike) -> GeographicPosition: ...
def ground_point(site: Site, position: GeographicPosition) -> NDArray[np.float64]: ...
def _simulate(arg0: str, arg1: str, arg2: int, arg3: float | None, arg4: object) -> None: ...
def _replay(
    arg0: str,
    arg1: str,
    arg2: str,
    arg3: str,
    arg4: str,
    arg5: bool,
    arg6: str,
    arg7: Sequence[str],
    arg8: Config | None,
    arg9: object,
) -> dict[str, Any]: ...
def _evaluate(
    arg0: str,
    arg1: str,
    arg2: str,
    arg3: str,
    arg4: Sequence[str],
    arg5: Config | None,
    arg6: Mapping[str, Any],
    arg7: bool,
    arg8: object,
) -> dict[str, Any]: ...
def _check(arg0: str, arg1: object) -> list[tuple[str, int, str, str, str, str]]: ...
def _report(
    arg0: str,
    arg1: Sequence[tuple[str, str]],
    arg2: str,
    arg3: bool,
    arg4: object,
) -> None: ...
def _calibrate(
    arg0: Sequence[str],
    arg1: Sequence[str],
    arg2: Sequence[str],
    arg3: str,
    arg4: str,
    arg5: object,
) -> dict[str, Any]: ...
def _judge_arrays(
    arg0: int,
    arg1: ArrayLike,
    arg2: ArrayLike,
    arg3: ArrayLike,
    arg4: ArrayLike,
    arg5: ArrayLike,
    arg6: ArrayLike,
    arg7: float,
    arg8: float,
) -> tuple[dict[str, float], list[tuple[float, ...]]]: ...
def _read_results(arg0: str, arg1: bool) -> dict[str, Any]: ...
