# SPDX-License-Identifier: Apache-2.0
"""The answer of a search as a page that needs nothing else: tables, words and plots."""

from __future__ import annotations

import os
from collections.abc import Iterable, Mapping, Sequence
from html import escape
from typing import TYPE_CHECKING

import veskar

from .explanation import importance_note, word
from .figures import figures
from .front import front_rows
from .judgement import Verdict
from .settings import value_in, write

if TYPE_CHECKING:
    from optuna.trial import FrozenTrial

    from .answer import Judged
    from .search import Search

_STYLE = """
:root { --page: #eef1f4; --surface: #fff; --text: #18222e; --muted: #5b6978; --line: #dbe1e8;
  --accent: #0b6e72; --good: #16794a; --alarm: #c6303e; color-scheme: light dark; }
@media (prefers-color-scheme: dark) { :root { --page: #0d1218; --surface: #151c24; --text: #e4eaf0;
  --muted: #9aa8b6; --line: #26313d; --accent: #46c2b8; --good: #58c98f; --alarm: #ff6b76; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 1200px; padding: 16px; background: var(--page); color: var(--text);
  font: 14px/1.5 system-ui, sans-serif; font-variant-numeric: tabular-nums; }
h1 { font-size: 20px; margin: 0; }
h2 { font-size: 16px; margin: 0 0 8px; }
section { background: var(--surface); border: 1px solid var(--line); border-radius: 8px;
  margin-top: 12px; padding: 14px; overflow-x: auto; }
.good { color: var(--good); } .bad { color: var(--alarm); } .muted { color: var(--muted); }
table { border-collapse: collapse; }
th, td { border-bottom: 1px solid var(--line); padding: 3px 12px 3px 0; text-align: right; }
th:first-child, td:first-child { text-align: left; }
thead th { color: var(--muted); font-weight: 500; }
tbody th { font-weight: 500; }
.figures { display: grid; gap: 12px; grid-template-columns: repeat(auto-fill, minmax(340px, 1fr)); }
figure { margin: 0; } figcaption { font-weight: 500; overflow-wrap: anywhere; }
figure svg { background: #fff; border-radius: 6px; height: auto; width: 100%; }
"""


def write_page(directory: str, search: Search, judged: Judged,
               importances: Mapping[str, float] | None) -> None:
    """Write page.html."""
    write(os.path.join(directory, "page.html"), page(search, judged, importances))


def page(search: Search, judged: Judged, importances: Mapping[str, float] | None) -> str:
    """The page as HTML."""
    name = escape(search.study.name)
    return "\n".join([
        "<!DOCTYPE html>", '<html lang="en">', "<head>", '<meta charset="utf-8">',
        '<meta name="viewport" content="width=device-width, initial-scale=1">',
        f"<title>{name} - tuning</title>", f"<style>{_STYLE}</style>", "</head>", "<body>",
        f"<h1>{name}</h1>", _summary(search, judged),
        *(_judgement(search, trial, verdict) for trial, verdict in judged),
        _parameters(search, judged, importances), _figures(search), _front(search),
        f'<p class="muted">veskar {escape(veskar.__version__)}. The training scores chose the setting; '
        "only the held-out recordings judge it.</p>",
        "</body>", "</html>", ""])


def _summary(search: Search, judged: Judged) -> str:
    if judged and judged[-1][1].accepted:
        verdict = f'<strong class="good">Trial {judged[-1][0].number} is recommended.</strong>'
    else:
        verdict = '<strong class="bad">No setting is recommended: keep the baseline.</strong>'
    return (f"<p>{verdict} {search.finished} trials, {search.pruned} of them given up, "
            f"{len(search.feasible())} better in training and within the tolerance everywhere.</p>")


def _judgement(search: Search, trial: FrozenTrial, verdict: Verdict) -> str:
    state = ('<span class="good">recommended</span>' if verdict.accepted
             else '<span class="bad">not recommended</span>')
    metrics = {scene.name: scene.metric for scene in search.study.scenes}
    rows = []
    for name, part in (*verdict.parts(), ("score", verdict.score)):
        kind = "good" if part.high < 0.0 else "bad" if part.low > 0.0 else ""
        what = f"{name} ({metrics[name]})" if name in metrics else name
        rows.append(([what, f"{part.baseline:.4f}", f"{part.candidate:.4f}", f"{part.mean:+.4f}",
                      f"{part.low:+.4f} to {part.high:+.4f}"], kind))
    faults = "".join(f'<p class="bad">{escape(fault)}</p>' for fault in verdict.faults)
    return _section(f"Trial {trial.number} on held-out recordings: {state}",
                    _table(["costs", "baseline", "trial", "change", "interval"], rows) + faults)


def _parameters(search: Search, judged: Judged, importances: Mapping[str, float] | None) -> str:
    # The best settings in training; those that were judged, where some were.
    trials = [trial for trial, _ in judged] or search.feasible()[:1]
    shares = importances or {}
    keys = sorted((parameter.key for parameter in search.study.parameters),
                  key=lambda key: -shares.get(key, 0.0))
    rows = [([key, word(value_in(search.study.base, key)), *(word(trial.params[key]) for trial in trials),
              f"{shares[key]:.1%}" if key in shares else ""], "") for key in keys]
    return _section("Parameters", _table(
        ["key", "baseline", *(f"trial {trial.number}" for trial in trials), "share in the variation"], rows)
        + f'<p class="muted">{escape(importance_note(importances))}</p>')


def _front(search: Search) -> str:
    if not search.study.objectives:
        return ""
    return _section("Pareto front in training", _table(
        ["setting", "score", *(f"mean {metric}" for metric in search.study.objectives)],
        [([name, *(f"{value:.4f}" for value in values)], "") for name, values in front_rows(search)]))


def _figures(search: Search) -> str:
    try:
        drawn = [f"<figure><figcaption>{escape(title)}</figcaption>{svg}</figure>"
                 for title, svg in figures(search)]
    except ImportError:
        return _section("Plots", '<p class="muted">Plots need python3-matplotlib.</p>')
    return _section("Plots of the training scores", f'<div class="figures">{"".join(drawn)}</div>')


def _section(title: str, contents: str) -> str:
    return f"<section><h2>{title}</h2>{contents}</section>"


def _table(heads: Sequence[str], rows: Iterable[tuple[Sequence[str], str]]) -> str:
    head = "".join(f"<th>{escape(text)}</th>" for text in heads)
    body = "".join(f'<tr class="{kind}"><th>{escape(first)}</th>'
                   + "".join(f"<td>{escape(text)}</td>" for text in rest) + "</tr>"
                   for (first, *rest), kind in rows)
    return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>"
