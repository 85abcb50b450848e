# SPDX-License-Identifier: Apache-2.0
"""The functions against the program, which is in VESKAR_PROGRAM."""

import json
import os
import pathlib
import pickle
import subprocess
import threading

import numpy as np
import pytest

import veskar


def program(*arguments):
    subprocess.run([os.environ["VESKAR_PROGRAM"], *map(str, arguments)], check=True,
                   capture_output=True)


@pytest.fixture(scope="session")
def recording(tmp_path_factory):
    scenario = pathlib.Path(__file__).parents[2] / "config/scenarios/perimeter.json"
    return veskar.simulate(scenario, tmp_path_factory.mktemp("made") / "perimeter.jsonl", seed=7,
                           duration=20.0)


@pytest.fixture(scope="session")
def run(recording):
    return veskar.replay(recording)


def test_simulate_equals_the_program(recording, root, tmp_path):
    other = tmp_path / "other.jsonl"
    program("simulate", root / "config/scenarios/perimeter.json", "--seed", 7, "--duration", 20,
            "-o", other)
    assert pathlib.Path(recording.path).read_bytes() == other.read_bytes()


@pytest.mark.parametrize("arguments, options", [
    ([], {}),
    (["--set", "radarGain=2.5"], {"changes": {"radarGain": 2.5}}),
    (["--config", "config/fusion-plain.json", "--tags"], {"config": "config/fusion-plain.json",
                                                          "tags": True}),
])
def test_replay_equals_the_program_byte_for_byte(recording, root, tmp_path, monkeypatch, arguments,
                                                 options):
    monkeypatch.chdir(root)
    program("replay", recording.path, "-o", tmp_path / "fused.jsonl", "--explain",
            tmp_path / "why.jsonl", *arguments)
    made = veskar.replay(recording, explanations=tmp_path / "why2.jsonl", **options)
    assert made.to_bytes() == (tmp_path / "fused.jsonl").read_bytes()
    assert (tmp_path / "why2.jsonl").read_bytes() == (tmp_path / "why.jsonl").read_bytes()


def test_replay_takes_a_config(recording, run):
    config = veskar.Config.defaults()
    assert veskar.replay(recording, config).to_bytes() == run.to_bytes()
    config.module.systemTrackConfirmationLimitUpper = 2.0
    config.module.systemTrackConfirmationLimitLower = 2.0
    assert not veskar.replay(recording, config).to_pandas()["confirmed"].any()
    with pytest.raises(ValueError, match="change the Config itself"):
        veskar.replay(recording, config, changes={"veskarModule.gatingDistance": 5.0})


def test_evaluate_equals_the_program(recording, run, tmp_path):
    for arguments, metrics in (([], veskar.evaluate(recording)),
                               ([run.path], veskar.evaluate(recording, run))):
        program("evaluate", recording.path, *arguments, "--format", "json", "-o",
                tmp_path / "figures.json")
        assert metrics.to_json() == (tmp_path / "figures.json").read_text()
        assert metrics.parts == json.loads((tmp_path / "figures.json").read_text())["parts"]
    frame = metrics.to_pandas()
    assert frame.loc[("all", "fusion"), "GOSPA"] == metrics["GOSPA"] > 0.0
    assert "GOSPA" in str(metrics)


def test_metrics_over_time_have_the_mean_of_the_whole(recording, run):
    metrics = veskar.evaluate(recording, run)
    over_time = metrics.over_time()
    fusion = over_time[over_time["tracker"] == "fusion"]
    assert fusion["gospa"].mean() == pytest.approx(metrics["GOSPA"], rel=1e-12)
    assert fusion["missed"].mean() == pytest.approx(metrics["missed_per_instant"], rel=1e-12)
    objects = metrics.per_object().loc["fusion"]
    assert objects["tracks"].mean() == pytest.approx(metrics["tracks_per_object"], rel=1e-12)


def lines_of(path):
    with open(path) as file:
        return [json.loads(line) for line in file]


def test_recordings_come_as_columns(recording):
    lines = [line for line in lines_of(recording.path)[1:] if "end" not in line]
    frame = recording.to_pandas()
    radar = [(line["time"], track["id"], track["range"]) for line in lines
             if line.get("source") == "radar" for track in line["tracks"]]
    rows = frame[frame["sensor"] == "radar"]
    assert len(radar) > 100
    assert list(zip(rows["time"], rows["id"], rows["range"])) == radar
    assert rows["left"].isna().all() and rows["x"].isna().all()
    assert frame["confirmed"].dtype == bool
    assert recording.header["name"] == "perimeter"
    assert set(frame["sensor"]) == {"radar", "video", "truth"}
    assert set(recording.to_pandas(truth=False)["sensor"]) == {"radar", "video"}


def test_batches_are_parts_of_the_whole(recording, run):
    for source in (recording, run):
        whole = source.to_pandas()
        batches = list(source.batches(rows=100))
        assert len(batches) > 3
        for name in whole:
            joined = np.concatenate([batch[name] for batch in batches])
            np.testing.assert_array_equal(joined, whole[name].to_numpy())


def test_fused_tracks_come_as_columns(run):
    fused = [(line["time"], track["id"], track["range"]) for line in lines_of(run.path)
             if "tracks" in line for track in line["tracks"]]
    frame = run.to_pandas()
    assert list(zip(frame["time"], frame["id"], frame["range"])) == fused
    assert frame["id"].min() == 1


def test_runs_recordings_and_metrics_can_be_pickled(recording, run):
    copy = pickle.loads(pickle.dumps(run))
    assert copy.path != run.path and copy.to_bytes() == run.to_bytes()
    path = copy.path
    del copy
    assert not os.path.exists(path) and os.path.exists(run.path)
    assert pickle.loads(pickle.dumps(recording)).header == recording.header
    metrics = veskar.evaluate(recording, run)
    assert pickle.loads(pickle.dumps(metrics)).to_pandas().equals(metrics.to_pandas())


def test_replays_of_one_process_take_turns(recording, run):
    results = []
    threads = [threading.Thread(target=lambda: results.append(veskar.replay(recording).to_bytes()))
               for _ in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [run.to_bytes()] * 3


def test_a_replay_beside_an_open_module_is_refused(recording):
    with veskar.FusionModule(veskar.Config.defaults()):
        with pytest.raises(RuntimeError, match="a FusionModule is in use"):
            veskar.replay(recording)


def fused_bytes(path):
    return veskar.replay(path).to_bytes()


def fails(item):
    raise KeyError(item)


def test_map_uses_processes_and_keeps_the_order(recording, run, capsys):
    assert veskar.map(fused_bytes, [recording.path] * 3, processes=2, progress=True) == (
        [run.to_bytes()] * 3)
    assert "3/3" in capsys.readouterr().err
    with pytest.raises(KeyError, match="1"):
        veskar.map(fails, [1, 2], progress=False)


def test_faults_have_file_and_line(recording, tmp_path):
    lines = pathlib.Path(recording.path).read_text().splitlines(keepends=True)
    lines[41] = lines[41].replace('"time"', '"tim"', 1)
    broken = tmp_path / "broken.jsonl"
    broken.write_text("".join(lines))
    output = tmp_path / "fused.jsonl"
    for work in (lambda: veskar.replay(broken, output=output), lambda: veskar.evaluate(broken),
                 lambda: veskar.read_recording(broken).to_pandas()):
        with pytest.raises(veskar.InputError) as raised:
            work()
        assert (raised.value.file, raised.value.line) == (str(broken), 42)
    assert not output.exists()
    with pytest.raises(FileNotFoundError):
        veskar.read_recording(tmp_path / "none.jsonl")
    with pytest.raises(FileNotFoundError):
        veskar.replay(recording, output=tmp_path / "none" / "fused.jsonl")


def test_inputs_are_not_overwritten(recording):
    before = pathlib.Path(recording.path).read_bytes()
    with pytest.raises(ValueError, match="would overwrite the recording"):
        veskar.replay(recording, output=recording.path)
    assert pathlib.Path(recording.path).read_bytes() == before


def test_what_progress_throws_ends_the_work(recording, tmp_path):
    def interrupt(fraction):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        veskar.replay(recording, output=tmp_path / "fused.jsonl", progress=interrupt)
    assert not (tmp_path / "fused.jsonl").exists()
    veskar.replay(recording)


def test_evaluate_refuses_what_does_not_fit(recording, run, root, tmp_path):
    other = veskar.simulate(root / "config/scenarios/road.json", tmp_path / "road.jsonl",
                            duration=5.0)
    with pytest.raises(veskar.InputError):
        veskar.evaluate(other, run)
    for options in ({"cutoff": 0.0}, {"bands": [-1.0]}, {"hits": [0]}):
        with pytest.raises(ValueError):
            veskar.evaluate(recording, run, **options)


def test_check_finds_what_the_program_finds(root, tmp_path):
    config = tmp_path / "config.json"
    config.write_text(veskar.Config.defaults().to_json().replace('"useJVA": true', '"useJVA": 1'))
    found = veskar.check(config)
    printed = subprocess.run([os.environ["VESKAR_PROGRAM"], "check", config], capture_output=True,
                             text=True)
    assert [str(finding) for finding in found] == printed.stdout.splitlines()[:-1]
    assert found[0].severity == "fault" and found[0].key == "veskarModule.useJVA"


def test_a_package_without_calibrate_says_so(recording, monkeypatch):
    import _without_calibration

    monkeypatch.setattr("veskar._veskar._calibrate", _without_calibration._calibrate)
    with pytest.raises(NotImplementedError, match="built without `calibrate`"):
        veskar.calibrate(recording)
