# SPDX-License-Identifier: Apache-2.0
"""The base of classes that watch the decisions of a fusion."""


class FusionObserver:
    """Watches the decisions of a FusionModule or FusionPipeline.

    Derive from it and override what is of interest: only these methods are called, from within the
    call that fuses. They must not call the fusion. An exception in one of them reaches the caller
    when the frame is done; the fusion remains usable. Times are those of the fusion, seconds.
    """

    def on_frame(self, frame):
        """A frame (ObservedFrame) is about to be fused; what follows belongs to it."""

    def on_continuation(self, continuation):
        """A sensor track that a system track holds has reported again (Continuation)."""

    def on_candidate(self, candidate):
        """A sensor track was compared with a system track (Candidate)."""

    def on_merge_candidate(self, candidate):
        """Two system tracks were compared, to find out whether they are one (MergeCandidate)."""

    def on_assignment(self, link):
        """A sensor track and a system track belong together from now on (Link)."""

    def on_merge(self, survivor_id, other_id):
        """A system track was folded into another one."""

    def on_start(self, link):
        """A system track has started from a sensor track (Link)."""

    def on_start_withheld(self, source, sensor_track_id, coasting_time):
        """A sensor track starts no system track, because it coasts."""

    def on_confirmation(self, system_track_id, probability, limit):
        """A system track was confirmed: its probability has passed the limit."""

    def on_pruning(self, pruning):
        """A sensor track has left a system track (Pruning)."""

    def on_deletion(self, system_track_id, reason):
        """A system track has ended, for a DeletionReason."""

    def on_confirmation_withheld(self, system_track_id, range_std, limit):
        """A system track is probable enough, but the std of its range (m) is not below the limit."""
