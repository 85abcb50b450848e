# SPDX-License-Identifier: Apache-2.0
"""The base of classes that watch the decisions of a fusion."""

from ._veskar import (
    Candidate,
    Continuation,
    DeletionReason,
    Link,
    MergeCandidate,
    ObservedFrame,
    Pruning,
    Source,
)

__all__ = ["FusionObserver"]


class FusionObserver:
    """Watches the decisions of a FusionModule or FusionPipeline.

    Derive from it and override what is of interest: only these methods are called, from within the
    call that fuses. They must not call the fusion. An exception in one of them reaches the caller
    when the frame is done; the fusion remains usable. Times are those of the fusion, seconds.
    """

    def on_frame(self, frame: ObservedFrame) -> None:
        """A frame (ObservedFrame) is about to be fused; what follows belongs to it."""

    def on_continuation(self, continuation: Continuation) -> None:
        """A sensor track that a system track holds has reported again (Continuation)."""

    def on_candidate(self, candidate: Candidate) -> None:
        """A sensor track was compared with a system track (Candidate)."""

    def on_merge_candidate(self, candidate: MergeCandidate) -> None:
        """Two system tracks were compared, to find out whether they are one (MergeCandidate)."""

    def on_assignment(self, link: Link) -> None:
        """A sensor track and a system track belong together from now on (Link)."""

    def on_merge(self, survivor_id: int, other_id: int) -> None:
        """A system track was folded into another one."""

    def on_start(self, link: Link) -> None:
        """A system track has started from a sensor track (Link)."""

    def on_start_withheld(self, source: Source, sensor_track_id: int, coasting_time: float) -> None:
        """A sensor track starts no system track, because it coasts."""

    def on_confirmation(self, system_track_id: int, probability: float, limit: float) -> None:
        """A system track was confirmed: its probability has passed the limit."""

    def on_pruning(self, pruning: Pruning) -> None:
        """A sensor track has left a system track (Pruning)."""

    def on_deletion(self, system_track_id: int, reason: DeletionReason) -> None:
        """A system track has ended, for a DeletionReason."""

    def on_confirmation_withheld(self, system_track_id: int, range_std: float,
                                 limit: float) -> None:
        """A system track is probable enough, but the std of its range (m) is not below the limit."""
