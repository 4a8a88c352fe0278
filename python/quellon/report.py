"""`python3 -m quellon report MODEL.tmw -o DIR`: runs a model and writes its figures and
one HTML page that shows them with the summary tables. The page has no script and no
outside link, so it opens offline; the figures stand beside it as PNG files."""
from __future__ import annotations

import argparse
import html
import os
import sys
from pathlib import Path

import matplotlib

from . import plots
from .load_cases import as_load_cases
from .model import QuellonError
from .results import Results, run

FIGURES = (
    ("profiles.png", "Pile profiles"),
    ("plan.png", "Plan of the group with the pile head loads"),
    ("load_settlement.png", "Load-settlement curve"),
)


def profile_piles(results: Results) -> list[int]:
    """The piles worth a profile: the most and least loaded axially and the one with the
    largest bending moment (at most three)."""
    h = results.heads
    chosen = [int(h.pile[h.Fz_kN.idxmax()]), int(h.pile[h.Fz_kN.idxmin()]),
              int(results.max_moments().sort_values("M_kNm").pile.iloc[-1])]
    return list(dict.fromkeys(chosen))


def _table(df, floatfmt="{:.4g}") -> str:
    return df.to_html(index=False, border=0, float_format=lambda v: floatfmt.format(v), na_rep="")


def write_report(model: str | os.PathLike, out: str | os.PathLike, load_cases=None,
                 mechanics: str = "as-defined") -> Path:
    """Runs the model file and writes the figures and index.html into `out`; returns the
    page's path. load_cases: a case file (or list, or frame) whose summary table the page
    adds (see `quellon.load_cases`). mechanics: as for `run`."""
    cases = as_load_cases(load_cases)       # a faulty case file stops here, before any output
    out = Path(out)
    out.mkdir(parents=True, exist_ok=True)
    results = run(model, keep=out, load_cases=cases or None, mechanics=mechanics)
    piles = profile_piles(results)
    plots.profiles(results, piles=piles, path=out / FIGURES[0][0])
    plots.plan(results, path=out / FIGURES[1][0])
    plots.load_settlement(results, path=out / FIGURES[2][0])
    title = f"QuellonEngine report: {Path(model).name}"
    notes = [t for s, t in results.messages if s >= 1]
    names = ", ".join(str(p) for p in piles)
    parts = [
        "<!DOCTYPE html>", "<html lang=\"en\"><head><meta charset=\"utf-8\">",
        f"<title>{html.escape(title)}</title>",
        "<style>body{font-family:sans-serif;margin:2em;max-width:70em}"
        "table{border-collapse:collapse;font-size:90%;margin-bottom:1.5em}"
        "td,th{padding:2px 8px;text-align:right;border-bottom:1px solid #ddd}"
        "img{max-width:100%;border:1px solid #ccc}</style></head><body>",
        f"<h1>{html.escape(title)}</h1>",
        f"<p>{results.increments} increment(s), {'non-linear' if results.nonlinear else 'linear'} analysis, "
        f"{len(results.heads)} piles. Axes: X, Y horizontal, Z positive downward.</p>",
    ]
    if results.mechanics == "corrected":
        parts.append("<p><b>Mechanics: corrected</b> (see docs/mechanics.md of the engine).</p>")
    if notes:
        parts.append("<p><b>Engine warnings and errors:</b> " + html.escape("; ".join(notes)) + "</p>")
    parts.append("<h2>Figures</h2><ul>")
    parts += [f'<li><a href="{f}">{html.escape(t)}</a></li>' for f, t in FIGURES]
    parts.append("</ul>")
    for f, t in FIGURES:
        extra = f" (piles {names})" if f == "profiles.png" else ""
        parts.append(f'<h3>{html.escape(t + extra)}</h3><p><img src="{f}" alt="{html.escape(t)}"></p>')
    parts += ["<h2>Cap loads and movement by increment</h2>", _table(results.cap),
              "<h2>Group stiffness by increment (diagonal)</h2>", _table(results.stiffness, "{:.5g}"),
              "<h2>Loads at the pile heads (last increment)</h2>", _table(results.heads),
              "<h2>Largest bending moment of each pile</h2>", _table(results.max_moments())]
    if results.case_summary is not None:
        parts += ["<h2>Load cases</h2><p>At the cap its movement, at the pile heads the largest axial force "
                  "in compression and in tension and the largest bending moment, each with its pile; "
                  "<i>governs</i> names the columns in which the case gives the largest value.</p>",
                  _table(results.case_summary)]
    parts.append("</body></html>")
    page = out / "index.html"
    page.write_text("\n".join(parts) + "\n", encoding="utf-8")
    return page


def main(argv: list[str] | None = None) -> int:
    matplotlib.use("Agg")
    parser = argparse.ArgumentParser(prog="python3 -m quellon")
    sub = parser.add_subparsers(dest="command", required=True)
    rep = sub.add_parser("report", help="run a model and write its figures and an HTML page")
    rep.add_argument("model", help="text model file (.tmw)")
    rep.add_argument("-o", "--out", required=True, help="directory for the page and the figures")
    rep.add_argument("--mechanics", choices=["as-defined", "corrected"], default="as-defined",
                     help="the method as defined (default) or with its known flaws corrected")
    rep.add_argument("--load-cases", metavar="CASES.csv",
                     help="also work the load cases of a CSV file (name, Fx, Fy, Fz, Mx, My, Mz, X, Y; "
                          "as quellon run --load-cases) and add their table")
    args = parser.parse_args(argv)
    try:
        page = write_report(args.model, args.out, args.load_cases, mechanics=args.mechanics)
    except QuellonError as e:
        print(f"quellon: {e}", file=sys.stderr)
        return 2
    print(page)
    return 0
