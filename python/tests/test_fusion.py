# SPDX-License-Identifier: Apache-2.0
import multiprocessing
import threading

import numpy as np
import pytest

import veskar
from veskar import Source


def frames(track, count):
    """Times with a video and a radar frame each of one walking person."""
    for number in range(count):
        time = 100.0 + 0.1 * number
        u = 0.1 + 0.001 * number
        yield Source.VIDEO, time, [track(time=time, u=u)]
        yield Source.RADAR, time, [track(Source.RADAR, id=5, time=time, u=u)]


def run(module, track, count=10):
    for source, time, tracks in frames(track, count):
        module.cycle(source, time, tracks)


@pytest.fixture
def module():
    with veskar.FusionModule(veskar.Config.defaults(), clock=lambda: 100.0) as made:
        yield made


def test_fuses_radar_and_video_into_one_track(module, track):
    run(module, track)
    fused, = module.system_tracks
    assert fused.id == 1 and fused.is_confirmed
    assert set(fused.sensor_tracks[Source.RADAR]) == {5}
    assert fused.covariance[0, 0] < 1e-3
    assert fused.covariance.base is not None  # no copy


def test_ids_begin_anew_in_the_next_module(track):
    for _ in range(2):
        with veskar.FusionModule(veskar.Config.defaults(), clock=lambda: 100.0) as module:
            run(module, track)
            assert [fused.id for fused in module.system_tracks] == [1]


def test_asks_the_given_clock(track):
    asked = []

    def clock():
        asked.append(True)
        return 100.0

    with veskar.FusionModule(veskar.Config.defaults(), clock) as module:
        run(module, track, 3)
    assert len(asked) == 6


def test_a_broken_clock_reaches_the_caller(track):
    with veskar.FusionModule(veskar.Config.defaults(), lambda: 1 / 0) as module:
        with pytest.raises(ZeroDivisionError):
            module.cycle(Source.VIDEO, 100.0, [track(time=100.0)])


def test_observers_are_told_what_is_decided(module, track):
    class Log(veskar.FusionObserver):
        def __init__(self):
            self.told = []

        def on_frame(self, frame):
            self.told.append(("frame", frame.source, frame.sensor_tracks))

        def on_start(self, link):
            self.told.append(("start", link.system_track_id, link.source))

        def on_assignment(self, link):
            self.told.append(("assignment", link.system_track_id, link.sensor_track_id))

        def on_confirmation(self, system_track_id, probability, limit):
            assert probability > limit
            self.told.append(("confirmation", system_track_id))

    module.observer = log = Log()
    assert module.observer is log
    run(module, track)
    assert log.told[:2] == [("frame", Source.VIDEO, 1), ("start", 1, Source.VIDEO)]
    assert ("assignment", 1, 5) in log.told and ("confirmation", 1) in log.told
    count = len(log.told)
    module.observer = None
    run(module, track, 1)
    assert len(log.told) == count


def test_an_exception_in_an_observer_reaches_the_caller_and_harms_nothing(track):
    class Broken(veskar.FusionObserver):
        def on_continuation(self, continuation):
            raise KeyError("broken")

    def states(observer):
        errors = 0
        with veskar.FusionModule(veskar.Config.defaults(), clock=lambda: 100.0) as module:
            module.observer = observer
            for source, time, tracks in frames(track, 10):
                try:
                    module.cycle(source, time, tracks)
                except KeyError:
                    errors += 1
            return errors, [fused.state.copy() for fused in module.system_tracks]

    errors, observed = states(Broken())
    none, plain = states(None)
    assert errors > 5 and none == 0
    np.testing.assert_array_equal(observed, plain)


def test_an_observer_must_not_call_the_module(module, track):
    class Reentrant(veskar.FusionObserver):
        def on_frame(self, frame):
            module.cycle(Source.VIDEO, 100.0, [])

    module.observer = Reentrant()
    with pytest.raises(RuntimeError, match="not from its observer"):
        module.cycle(Source.VIDEO, 100.0, [track(time=100.0)])
    module.observer = None
    module.cycle(Source.VIDEO, 100.1, [track(time=100.1)])


def test_a_second_module_at_the_same_time_is_refused(module):
    with pytest.raises(RuntimeError, match="a FusionModule is in use in this process"):
        veskar.FusionModule(veskar.Config.defaults())


def test_a_closed_module_says_so_and_leaves_room(track):
    module = veskar.FusionModule(veskar.Config.defaults())
    module.close()
    module.close()
    with pytest.raises(RuntimeError, match="is closed"):
        module.cycle(Source.VIDEO, 100.0, [])
    veskar.FusionModule(veskar.Config.defaults()).close()


def fuse_in_child(queue):
    with veskar.FusionModule(veskar.Config.defaults()) as module:
        queue.put(len(module.system_tracks))


def test_a_forked_process_has_a_turn_of_its_own(module):
    context = multiprocessing.get_context("fork")
    queue = context.Queue()
    child = context.Process(target=fuse_in_child, args=(queue,))
    child.start()
    assert queue.get(timeout=60) == 0
    child.join()
    assert child.exitcode == 0


def test_other_python_threads_run_while_the_fusion_works(module, track):
    """A cycle that waits for its clock would hang if it kept the interpreter lock."""
    released = threading.Event()

    class Waiting(veskar.FusionObserver):
        def on_frame(self, frame):
            assert released.wait(30)

    module.observer = Waiting()
    threading.Timer(0.05, released.set).start()
    module.cycle(Source.VIDEO, 100.0, [track(time=100.0)])
    assert len(module.system_tracks) == 1


def test_none_among_the_tracks_is_refused(module):
    with pytest.raises(TypeError, match="None among the tracks"):
        module.cycle(Source.VIDEO, 100.0, [None])


def test_the_steps_of_a_frame_are_those_of_cycle_frame(track):
    def fuse(steps):
        with veskar.FusionModule(veskar.Config.defaults(), clock=lambda: 100.0) as module:
            for source, time, tracks in frames(track, 10):
                if steps:
                    module.predict_tracks(time)
                    module.update(source, tracks)
                    for report in tracks:
                        module.initialize(report)
                    module.management()
                else:
                    module.cycle_frame(source, time, tracks)
            return [(fused.id, fused.is_confirmed, fused.state.tolist())
                    for fused in module.system_tracks]

    assert fuse(steps=True) == fuse(steps=False) != []


def test_merges_system_tracks(module, track):
    module.initialize(track(id=1, u=0.1))
    module.initialize(track(Source.RADAR, id=5, u=0.11))
    target, other = module.system_tracks
    module.merge(target, other)
    assert set(target.sensor_tracks[Source.RADAR]) == {5}
    assert 0.1 < target.state[0] < 0.11
    with pytest.raises(ValueError, match="takes two system tracks"):
        module.merge(target, target)
    with pytest.raises(TypeError):
        module.initialize(None)


def test_tells_whether_a_detection_moves(module):
    moved = [module.tracked_od_has_motion(3, 0.05 * step, 0.0) for step in range(8)]
    assert not any(moved[:3]) and moved[-1]
    assert not module.tracked_od_has_motion(4, 0.0, 0.0)
