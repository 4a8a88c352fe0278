import re

import pytest
from matplotlib.figure import Figure

from conftest import EXAMPLES
from quellon import plots, report

PLOTS = [
    (plots.profiles, dict(piles=[1, 3]), ["Bending moment (kNm)", "Shear force (kN)", "Axial force (kN)",
                                          "Lateral movement (mm)"], "Depth below ground (m)"),
    (plots.plan, {}, ["Pile group plan: loads at the pile heads"], "Y (m)"),
    (plots.load_settlement, {}, ["Load-settlement curve (stopped at the axial capacity)"],
     "Settlement of the cap uz (mm)"),
]


@pytest.mark.parametrize("draw, kwargs, titles, ylabel", PLOTS)
def test_each_plot_returns_its_figure_and_writes_it(draw, kwargs, titles, ylabel, run_example, tmp_path):
    r = run_example("nonlinear_layered_failure")
    path = tmp_path / "figure.png"
    fig = draw(r, path=path, **kwargs)
    assert isinstance(fig, Figure)
    drawn = [ax for ax in fig.axes if ax.get_title()]
    assert [ax.get_title() for ax in drawn] == titles
    assert drawn[0].get_ylabel() == ylabel
    assert all(ax.has_data() for ax in drawn)
    assert path.stat().st_size > 10_000


def test_the_report_page_links_every_figure_it_names(tmp_path):
    page = report.write_report(EXAMPLES / "group_3x3_combined.tmw", tmp_path)
    text = page.read_text()
    linked = set(re.findall(r'(?:href|src)="([^"]+)"', text))
    assert {f for f, _ in report.FIGURES} <= linked
    for name in linked:
        assert not name.startswith(("http:", "https:", "/")), "the page must open offline"
        assert (tmp_path / name).stat().st_size > 10_000
    assert text.count("<table") == 4


def test_the_parametric_example_prints_falling_settlement_ratios_and_saves_its_plot(tmp_path, capsys):
    import runpy
    study = runpy.run_path(str(EXAMPLES / "parametric_spacing.py"))
    study["main"](tmp_path / "study.png")
    rows = [line.split() for line in capsys.readouterr().out.splitlines() if line[:4].strip().isdigit()]
    assert [int(r[0]) for r in rows] == [2, 3, 4, 5, 6]
    ratios = [float(r[3]) for r in rows]
    assert all(1 < b < a for a, b in zip(ratios, ratios[1:]))   # closer piles interact more
    assert (tmp_path / "study.png").stat().st_size > 10_000
