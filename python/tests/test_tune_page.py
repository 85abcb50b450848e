# SPDX-License-Identifier: Apache-2.0
"""The answer as a page."""

import builtins
import html.parser

import pytest
from surfaces import every_metric

from veskar.tune.page import page
from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search
from veskar.tune.storage import Storage
from veskar.tune.study import Parameter, Scene, Study

GATE, METHOD = "veskarModule.gatingDistance", "veskarModule.useJVA"


@pytest.fixture
def made(root):
    """A search and what was judged of it, on held-out recordings that differ from the others by so much."""

    def make(objectives=(), unseen=0.0):
        study = Study("study.json", "fog & <crowd>", str(root / "config/fusion-plain.json"),
                      (Parameter(GATE, 0.0, 10.0), Parameter(METHOD, choices=(True, False))),
                      (Scene("fog", "GOSPA", 1.0, "unused", None, (1, 2), (101, 102)),), 0.02, 12, 3, 1, {},
                      objectives=objectives)

        def cost(job):
            _, changes, sample = job
            lost = unseen if changes and sample.case == "101" else 0.0
            return 3.0 + 0.1 * abs(changes.get(GATE, 20.0) - 5.0) + lost

        def samples(seeds):
            return [Sample("fog", str(seed), study.metrics(study.scenes[0]), "") for seed in seeds]

        with Processes(1) as processes:
            search = Search(study, samples((1, 2)), processes, Storage("sqlite://"), every_metric(cost))
            search.run(12)
            return search, list(search.judge(samples((101, 102))))

    return make


class Reader(html.parser.HTMLParser):
    """Elements and texts; complains about elements that are not closed in order."""

    def __init__(self, text):
        super().__init__()
        self.open, self.elements, self.texts, self.links = [], [], [], []
        self.feed(text)
        assert self.open == []

    def handle_starttag(self, tag, attributes):
        self.elements.append(tag)
        self.links += [value for name, value in attributes if name in ("src", "href", "xlink:href")]
        if tag != "meta":
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.links += [value for name, value in attributes if name in ("src", "href", "xlink:href")]

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, text):
        self.texts.append(text)


def test_the_page_has_verdict_parameters_and_plots(made):
    search, judged = made()
    text = page(search, judged, {GATE: 0.95, METHOD: 0.05})
    reader = Reader(text)
    assert "fog & <crowd>" in reader.texts
    assert f"Trial {judged[-1][0].number} is recommended." in reader.texts
    assert reader.elements.count("svg") == 3  # history and two slices
    assert [cell for cell in reader.texts if cell in (GATE, METHOD)][:2] == [GATE, METHOD]
    assert "95.0%" in reader.texts
    part = judged[-1][1].scenes["fog"]
    assert f"{part.baseline:.4f}" in reader.texts and f"{part.candidate:.4f}" in reader.texts
    assert "fog (GOSPA)" in reader.texts
    assert "Pareto" not in text


def test_the_page_needs_nothing_else_and_is_the_same_each_time(made):
    search, judged = made()
    text = page(search, judged, None)
    assert all(link.startswith(("#", "data:")) for link in Reader(text).links)
    assert "<script" not in text and "url(http" not in text
    assert page(search, judged, None) == text


def test_several_objectives_have_a_front(made):
    search, judged = made(objectives=("IDSW", "OSPA"))
    reader = Reader(page(search, judged, None))
    assert reader.elements.count("svg") == 5
    assert "Pareto front in training" in reader.texts and "mean OSPA" in reader.texts
    assert f"trial {search.front()[0].number}" in reader.texts


def test_what_is_not_recommended_says_why(made):
    search, judged = made(unseen=5.0)
    assert len(judged) == 3
    reader = Reader(page(search, judged, None))
    assert "No setting is recommended: keep the baseline." in reader.texts
    for _, verdict in judged:
        assert all(fault in reader.texts for fault in verdict.faults)


def test_without_the_package_it_is_told_what_to_install(made, monkeypatch):
    imported = builtins.__import__

    def without(name, *others, **named):
        if name == "matplotlib":
            raise ImportError(name)
        return imported(name, *others, **named)

    search, judged = made()
    monkeypatch.setattr(builtins, "__import__", without)
    reader = Reader(page(search, judged, None))
    assert "Plots need python3-matplotlib." in reader.texts and "svg" not in reader.elements
