# SPDX-License-Identifier: Apache-2.0
import copy
import json
import pickle

import pytest

import veskar


def test_loads_the_shipped_file_as_the_defaults(root):
    assert veskar.Config.load(root / "config" / "fusion.json") == veskar.Config.defaults()


def test_names_every_key_of_the_file(root):
    written = json.loads(veskar.Config.defaults().to_json())
    config = veskar.Config.defaults()
    for section, field in (("veskarInputs", config.inputs), ("veskarModule", config.module),
                           ("veskarDetectionPriority", config.detectionPriority),
                           ("veskarRules", config.rules)):
        assert all(hasattr(field, key) for key in written[section])
    assert veskar.Config.from_dict(written, base=veskar.Config()) == config


def test_nested_fields_are_views_of_the_configuration():
    config = veskar.Config.defaults()
    config.module.gainNegative.radar = 0.25
    assert config.module.gainNegative.radar == 0.25
    assert json.loads(config.to_json())["veskarModule"]["gainNegative"]["radar"] == 0.25


def test_from_dict_changes_values_of_the_defaults_only():
    config = veskar.Config.from_dict({"veskarModule": {"gatingDistance": 7,
                                                       "gainNegative": {"radar": 0.5}},
                                      "rules": {"pairGate": 1.5}})
    expected = veskar.Config.defaults()
    expected.module.gatingDistance = 7.0
    expected.module.gainNegative.radar = 0.5
    expected.rules.pairGate = 1.5
    assert config == expected
    assert config != veskar.Config.defaults()


def test_from_dict_gives_back_what_to_dict_gave():
    config = veskar.Config.defaults()
    config.module.autocalibrationAspectLimits = {"human": (0.2, 0.7), "car": (1.0, 3.0)}
    assert veskar.Config.from_dict(config.to_dict(), base=veskar.Config()) == config


@pytest.mark.parametrize("values, message", [
    ({"veskarModule": {"gatingDistanc": 4.0}}, "veskarModule.gatingDistanc: the key is not known"),
    ({"veskarModul": {}}, "veskarModul: the key is not known"),
    ({"module": {"useJVA": "yes"}}, "module.useJVA: 'yes' cannot be used here, unlike "),
    ({"module": {"gainNegative": 0.1}}, "module.gainNegative: 0.1 cannot be used here"),
])
def test_from_dict_names_what_is_wrong(values, message):
    with pytest.raises(ValueError) as raised:
        veskar.Config.from_dict(values)
    assert message in str(raised.value)


def test_load_tells_file_line_and_key(tmp_path):
    text = veskar.Config.defaults().to_json().replace('"useJVA": true', '"useJVA": 1')
    file = tmp_path / "wrong.json"
    file.write_text(text)
    with pytest.raises(veskar.InputError, match="useJVA") as raised:
        veskar.Config.load(file)
    assert isinstance(raised.value, ValueError)
    assert raised.value.file == str(file)
    line = 1 + text[:text.index('"useJVA"')].count("\n")
    assert raised.value.line == line
    assert raised.value.key == "veskarModule.useJVA"


def test_load_of_a_missing_file_is_an_os_error(tmp_path):
    with pytest.raises(FileNotFoundError) as raised:
        veskar.Config.load(tmp_path / "none.json")
    assert raised.value.filename == str(tmp_path / "none.json")
    with pytest.raises(IsADirectoryError):
        veskar.Config.load(tmp_path)


def test_load_warns_of_keys_that_nothing_reads(tmp_path):
    written = json.loads(veskar.Config.defaults().to_json())
    written["veskarModule"]["gatingDistanc"] = 4.0
    file = tmp_path / "odd.json"
    file.write_text(json.dumps(written))
    with pytest.warns(UserWarning, match="gatingDistanc"):
        assert veskar.Config.load(file) == veskar.Config.defaults()
    fault, = veskar.find_faults(file.read_text())
    assert fault.effect == veskar.ConfigFault.Effect.IGNORED
    assert fault.key == "veskarModule.gatingDistanc"


def test_copies_and_pickles_are_equal_and_independent():
    config = veskar.Config.defaults()
    config.module.gatingDistance = float(1) / 3
    for other in (copy.deepcopy(config), copy.copy(config), pickle.loads(pickle.dumps(config))):
        assert other == config
        other.module.gatingDistance = 1.0
        assert other != config


def test_keywords_are_fields():
    assert veskar.Config.GainNegative(radar=0.5) != veskar.Config.GainNegative()
    assert repr(veskar.Config.GainNegative(radar=0.5)) == (
        "Config.GainNegative(radar=0.5, video=0.0)")
    with pytest.raises(TypeError, match="has no field 'rader'"):
        veskar.Config.GainNegative(rader=0.5)
