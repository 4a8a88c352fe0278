import math
import xml.etree.ElementTree as ET

import numpy as np
import pytest

import quellon
from conftest import EXAMPLES
from test_model import group_3x3

VERTICAL = ["group_3x3_combined", "nonlinear_layered_failure", "single_bored_pile_clay"]
ALL = VERTICAL + ["raked_group_torque"]


def close(a, b, scale):
    # The XML holds four significant digits: compare to a fraction of the largest value.
    return np.allclose(a, b, rtol=0, atol=2e-3 * scale + 1e-3)


@pytest.mark.parametrize("name", ALL)
def test_every_profile_is_in_equilibrium_from_head_to_toe(name, run_example):
    r = run_example(name)
    piles = r.piles.set_index("pile")
    for inc, pile in r.profiles[["increment", "pile"]].drop_duplicates().itertuples(index=False):
        p = r.profile(pile, inc)
        d, db = piles.shaft_diameter_m[pile], piles.base_diameter_m[pile]
        head, shaft, toe = p.iloc[0], p.iloc[1:-1], p.iloc[-1]
        scale = p.N_kN.abs().max()
        # The free-standing part carries no load on its length: head loads reach the ground.
        for c in ("Fx_kN", "Fy_kN", "N_kN", "T_kNm"):
            assert close(head[c], shaft[c].iloc[0], scale), (name, pile, c)
        # Down the shaft each element sheds what the soil takes from it, and below the last
        # the base carries the rest: no shear, and the axial force of the bearing pressure.
        h = shaft.length_m.to_numpy()
        for force, stress, width in (("Fx_kN", "stress_x_kPa", d), ("Fy_kN", "stress_y_kPa", d),
                                     ("N_kN", "stress_axial_kPa", math.pi * d)):
            below = shaft[force].to_numpy() - shaft[stress].to_numpy() * width * h
            expected = np.append(shaft[force].to_numpy()[1:], toe.N_kN if force == "N_kN" else 0.0)
            assert close(below, expected, scale), (name, inc, pile, force)
        assert close(toe.N_kN, toe.stress_axial_kPa * math.pi * db * db / 4, scale)
    assert (r.heads.Fz_kN.to_numpy() == r.profiles.query("element == 0 and increment == @r.increments")
            .N_kN.to_numpy()).all()


CASES = [(n, None) for n in VERTICAL] + [("python", dict(fx=-150, fy=400, fz=7000, mx=-900, my=300, mz=650))]


@pytest.mark.parametrize("name, loads", CASES)
def test_pile_head_loads_balance_the_cap_loads(name, loads, run_example):
    r = quellon.run(group_3x3(**loads)) if loads else run_example(name)
    h, cap = r.heads, r.cap.iloc[-1]
    dx, dy = h.x_m - cap.centre_x_m, h.y_m - cap.centre_y_m
    sums = {"Fx_kN": h.Fx_kN.sum(), "Fy_kN": h.Fy_kN.sum(), "Fz_kN": h.Fz_kN.sum(),
            "Mx_kNm": h.Mx_kNm.sum() + (dy * h.Fz_kN).sum(),
            "My_kNm": h.My_kNm.sum() + (dx * h.Fz_kN).sum(),
            "Mz_kNm": h.Mz_kNm.sum() + (dx * h.Fy_kN - dy * h.Fx_kN).sum()}
    scale = abs(cap.Fz_kN)
    for column, total in sums.items():
        assert close(total, cap[column], scale), (name, column, total, cap[column])


@pytest.mark.parametrize("name", ["group_3x3_combined", "raked_group_torque"])
def test_the_xml_stiffness_table_is_the_stiffness_callbacks(name, tmp_path):
    r = quellon.run(EXAMPLES / f"{name}.tmw", keep=tmp_path)
    inc = ET.parse(r.xml).getroot().find("Output/Increment")
    # The table is in GN/m and four digits; the callback gives kN/m.
    table = {(s.get("action-axis"), s.get("effect-axis")): float(s.get("value"))
             for s in inc.findall("Pile-Group/Stiffnesses/Force-Displacement-Stiffness")}
    assert len(table) == 9
    for i, a in enumerate("XYZ"):
        for j, e in enumerate("XYZ"):
            assert math.isclose(table[(a, e)], r.grmat[-1][i, j] / 1e6, rel_tol=1e-3, abs_tol=1e-3)
