# SPDX-License-Identifier: Apache-2.0
import copy
import pickle

import numpy as np
import pytest

import veskar


@pytest.fixture
def recording(root, tmp_path):
    return veskar.simulate(root / "config/scenarios/perimeter.json", tmp_path / "made.jsonl",
                           duration=10.0)


def fuse(recording, **options):
    """The fused frames of a recording, by a pipeline."""
    fused = []
    with veskar.FusionPipeline(veskar.Installation.load(recording.path), **options) as pipeline:
        frames = recording.frames()
        for frame in frames:
            fused += pipeline.push(frame)
        if frames.end is not None:
            fused += pipeline.advance(frames.end)
        return fused, pipeline.counts


def test_equals_replay_line_by_line(recording):
    run = veskar.replay(recording)
    for _ in range(2):  # ids begin anew
        fused, counts = fuse(recording)
        lines = "".join(frame.to_json_line() for frame in fused).encode()
        assert lines == b"".join(run.to_bytes().splitlines(keepends=True)[1:-1])
    assert counts.video_frames == run.counts["video_frames"] > 0
    assert counts.failed_frames == 0


def test_equals_replay_where_the_recording_says_its_end(recording, tmp_path):
    with open(recording.path) as file:
        lines = file.read()
    ended = tmp_path / "ended.jsonl"
    ended.write_text(lines + '{"end":12.5}\n')
    fused, counts = fuse(veskar.read_recording(ended))
    made = veskar.replay(ended)
    written = "".join(frame.to_json_line() for frame in fused).encode()
    assert written == b"".join(made.to_bytes().splitlines(keepends=True)[1:-1])
    assert counts.added_frames == made.counts["added_frames"] > 10


def test_fused_tracks_have_places_on_the_ground(recording):
    fused, _ = fuse(recording, tags=True)
    track = next(track for frame in reversed(fused) for track in frame.tracks if track.confirmed)
    assert track.ground.position.shape == (2,)
    assert (np.linalg.eigvalsh(track.ground.covariance) > 0.0).all()
    assert track.labels.object_class.name in veskar.vocabulary.KNOWN_CLASSES
    assert {support.source for support in track.sensors} <= {veskar.Source.VIDEO, veskar.Source.RADAR}
    assert isinstance(track.tags, set)


def test_frames_survive_their_line_and_pickling(recording):
    frames = list(recording.frames())
    assert len(frames) > 100
    for frame in frames[:20]:
        assert veskar.SensorFrame.parse(frame.to_json_line()) == frame
        assert pickle.loads(pickle.dumps(frame)) == frame


def test_only_one_pipeline_at_a_time(recording):
    installation = veskar.Installation.load(recording.path)
    with veskar.FusionPipeline(installation) as pipeline:
        with pytest.raises(RuntimeError, match="a FusionPipeline is in use"):
            veskar.FusionPipeline(installation)
        with pytest.raises(RuntimeError, match="a FusionPipeline is in use"):
            veskar.replay(recording)
    with pytest.raises(RuntimeError, match="is closed"):
        pipeline.advance(1.0)
    veskar.FusionPipeline(installation).close()


def test_an_exception_in_an_observer_leaves_the_pipeline_usable(recording):
    class Broken(veskar.FusionObserver):
        def on_frame(self, frame):
            raise KeyError("broken")

    frames = iter(recording.frames())
    with veskar.FusionPipeline(veskar.Installation.load(recording.path)) as pipeline:
        pipeline.observer = Broken()
        with pytest.raises(KeyError):
            for frame in frames:
                pipeline.push(frame)
        pipeline.observer = None
        assert any(pipeline.push(frame) for frame in frames)


def test_installations_tell_what_is_missing(recording, tmp_path):
    with pytest.raises(veskar.InputError, match="camera"):
        veskar.Installation.parse("{}")
    installation = veskar.Installation.load(recording.path)
    other = copy.deepcopy(installation)
    other.camera.mounting.position[2] += 1.0
    assert other != installation
    assert other.camera.mounting.position[2] == installation.camera.mounting.position[2] + 1.0


def test_projection_and_back(recording):
    projection = veskar.Projection(veskar.Installation.load(recording.path).camera.build())
    u, v = projection.position([20.0, 2.0, 0.0])
    assert projection.sees([20.0, 2.0, 0.0]) and not projection.sees([-20.0, 0.0, 0.0])
    origin = np.array(veskar.Installation.load(recording.path).camera.mounting.position)
    range = np.linalg.norm(np.array([20.0, 2.0, 0.0]) - origin)
    np.testing.assert_allclose(projection.ground_point(u, v, range), [20.0, 2.0], atol=1e-6)


def test_adapter_gives_tracks_of_the_fusion(recording):
    adapter = veskar.HostAdapter(veskar.Installation.load(recording.path), veskar.Config.defaults())
    frame = next(frame for frame in recording.frames() if frame.tracks)
    tracks = adapter.convert(frame, uptime=100.0)
    assert [track.id for track in tracks] == [report.id for report in frame.tracks]
    assert all(track.time == frame.time + 100.0 and track.probability > 0.0 for track in tracks)


def test_parameters_are_named_like_their_keys(root, tmp_path):
    assert veskar.HostParameters.load(root / "config/fusion.json") == veskar.HostParameters.defaults()
    file = tmp_path / "wrong.json"
    file.write_text('{"veskarHost": {"radarGain": 0.0}}')
    with pytest.raises(veskar.InputError, match="radarGain") as raised:
        veskar.HostParameters.load(file)
    assert raised.value.file == str(file)


def test_adapter_predicts_ahead(recording):
    adapter = veskar.HostAdapter(veskar.Installation.load(recording.path), veskar.Config.defaults())
    frame = next(frame for frame in recording.frames() if frame.tracks)
    tracks = adapter.convert(frame, ahead=0.5)
    assert all(track.time == frame.time + 0.5 for track in tracks)


def test_pipeline_shows_the_tracks_of_its_fusion(recording):
    with veskar.FusionPipeline(veskar.Installation.load(recording.path)) as pipeline:
        for frame in recording.frames():
            fused = pipeline.push(frame)
        assert fused[-1].tracks
        assert [track.id for track in pipeline.system_tracks] == (
            [track.id for track in fused[-1].tracks])
