import dataclasses
import re

import numpy as np
import pandas as pd
import pytest

import quellon
from conftest import EXAMPLES
from quellon import QuellonError
from test_model import group_3x3

CASES = EXAMPLES / "group_3x3_cases.csv"


@pytest.mark.parametrize("text, where", [
    ("name,Fx,Fy,Fz,Mx,My,Mz,X,Y\nA,0,0,900,0,0,0,0,0\n\nB,0,0,abc,0,0,0,0,0\n", ":4: column 4 (Fz): 'abc' is not"),
    ("A;0;0;900;0;0;0;0;0\n", ":1: 1 field"),
    ("A,0,0,900,0,0,0,0,0\r\n\"A\",1,0,900,0,0,0,0,0\r\n", ":2: column 1 (name): 'A' names the case of line 1"),
    ("A,0,0,900,0,0,0,,0\n", ":1: column 8 (X): empty"),
])
def test_a_faulty_case_file_is_refused_with_its_line_and_column(text, where, tmp_path):
    path = tmp_path / "cases.csv"
    path.write_bytes(text.encode())
    with pytest.raises(QuellonError, match=re.escape(where)) as e:
        quellon.read_load_cases(path)
    assert e.value.line == int(where.split(":")[1])


def test_the_models_own_loads_as_a_case_give_the_runs_own_increment():
    model = group_3x3()                         # its own loads: Fx 600, Fz 9000, My 1500
    model.load_cases = pd.read_csv(CASES)       # the frame form; "as modelled" repeats them
    r = quellon.run(model)
    assert list(r.cases) == list(pd.read_csv(CASES).name)
    own = r.cases["as modelled"]
    cap = ["ux_mm", "uy_mm", "uz_mm", "rx_mrad", "ry_mrad", "rz_mrad"]
    scale = r.cap[cap].abs().to_numpy().max()
    assert np.allclose(own.cap[cap], r.cap[cap], rtol=0, atol=2e-3 * scale)
    heads = ["Fx_kN", "Fy_kN", "Fz_kN", "Mx_kNm", "My_kNm", "Mz_kNm"]
    scale = r.heads[heads].abs().to_numpy().max()
    assert np.allclose(own.heads[heads], r.heads[heads], rtol=0, atol=2e-3 * scale)

    # Each column's mark goes to the cases with its largest value, and the cases built for
    # it govern where their loads alone act.
    s = r.case_summary
    for label, col in zip(quellon.load_cases.GOVERNS, ["ux_mm", "uy_mm", "uz_mm", "rx_mrad", "ry_mrad",
                                                      "rz_mrad", "compression_kN", "tension_kN", "moment_kNm"]):
        size = s[col].abs().fillna(0)
        marked = s.governs.str.split("; ").apply(lambda g: label in g)
        assert (marked == ((size == size.max()) & (size > 0))).all(), label
    g = s.set_index("name").governs
    assert "Y" in g["wind +Y"].split("; ") and "tension" in g["uplift -X"].split("; ")

    # The model file with the case file, the other way in, gives the same table.
    by_file = quellon.run(EXAMPLES / "group_3x3_combined.tmw", load_cases=CASES)
    pd.testing.assert_frame_equal(by_file.case_summary, s)


def test_a_non_linear_case_follows_the_runs_own_path_to_the_capacity():
    model = quellon.Model.read(EXAMPLES / "nonlinear_layered_failure.tmw")
    own = dataclasses.asdict(model.loads)
    light = dict(own, fz=own["fz"] / 4)
    model.load_cases = [quellon.LoadCase("as modelled", **own), quellon.LoadCase("light", **light)]
    r = quellon.run(model)
    assert r.stopped is not None                # the run's own path stops at the capacity
    case = r.cases["as modelled"]
    assert case.capacity_increment == r.cap.increment.iloc[-1]
    for c in ["Fz_kN", "uz_mm", "rx_mrad", "ry_mrad"]:
        assert np.allclose(case.cap[c], r.cap[c], rtol=0, atol=2e-3 * r.cap[c].abs().max() + 1e-9), c
    assert r.cases["light"].capacity_increment is None and len(r.cases["light"].cap) == model.increments
    assert list(r.case_summary.capacity_reached) == [True, False]
