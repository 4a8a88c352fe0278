import math
import os
import re
import subprocess
import xml.etree.ElementTree as ET

import numpy as np
import pandas as pd
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


# CSV header label -> the package's column that holds the same quantity.
PROFILE_CSV = {
    "mid-point depth below ground": "z_mid_m", "top depth below ground": "z_top_m",
    "mid-point along pile from head": "mid_from_head_m", "top along pile from head": "top_from_head_m",
    "axial force": "N_kN", "shear X": "Fx_kN", "shear Y": "Fy_kN", "moment about X": "Mx_kNm",
    "moment about Y": "My_kNm", "torque": "T_kNm", "axial movement": "uz_m", "X movement": "ux_m",
    "Y movement": "uy_m", "twist": "twist_rad", "axial stress": "stress_axial_kPa",
    "normal stress X": "stress_x_kPa", "normal stress Y": "stress_y_kPa", "torsional stress": "stress_torsion_kPa",
    "axial limit": "limit_axial_kPa", "normal X limit": "limit_x_kPa", "normal Y limit": "limit_y_kPa",
    "torsional limit": "limit_torsion_kPa", "axial yielded": "yield_axial", "normal X yielded": "yield_x",
    "normal Y yielded": "yield_y", "torsional yielded": "yield_torsion"}
HEADS_CSV = {"Fx": "Fx_kN", "Fy": "Fy_kN", "Fz": "Fz_kN", "Mx": "Mx_kNm", "My": "My_kNm", "Mz": "Mz_kNm",
             "X movement": "ux_m", "Y movement": "uy_m", "Z movement": "uz_m", "twist": "twist_rad"}
HISTORY_CSV = {"Fx": "Fx_kN", "Fy": "Fy_kN", "Fz": "Fz_kN", "Mx": "Mx_kNm", "My": "My_kNm", "Mz": "Mz_kNm",
               "X": "ux_mm", "Y": "uy_mm", "Z": "uz_mm", "about X": "rx_mrad", "about Y": "ry_mrad",
               "about Z": "rz_mrad"}
TO_CSV_UNIT = {("mm", "m"): 1000.0, ("mrad", "rad"): 1000.0, ("1 yes", "bool"): 1.0}


def profiles_from_head(r):
    p = r.profiles.copy()
    head = p[p.element == 0].set_index(["increment", "pile"]).s_top_m
    p["top_from_head_m"] = p.s_top_m - head.loc[list(zip(p.increment, p.pile))].to_numpy()
    p["mid_from_head_m"] = p.top_from_head_m + p.length_m / 2
    # A free end carries no shear, moment or torque: the document gives the toe its axial load alone.
    toe = p.element == p.element.max()
    p.loc[toe, ["Fx_kN", "Fy_kN", "Mx_kNm", "My_kNm", "T_kNm"]] = 0.0
    return p


def heads_in_external_axes(r):
    """Every increment's pile heads, turned from each pile's axes into the external ones."""
    h = r.profiles[r.profiles.element == 0].merge(r.piles[["pile", "rake_x_deg", "rake_y_deg"]], on="pile")
    a, e = np.radians(h.rake_x_deg.to_numpy()), np.radians(h.rake_y_deg.to_numpy())
    zero = np.zeros_like(a)
    # Columns: the pile's X (across, in the XZ plane), Y (across, in YZ) and its axis.
    turn = np.array([[np.cos(a), zero, -np.sin(a)], [zero, np.cos(e), -np.sin(e)],
                     [np.sin(a), np.sin(e), np.cos(a) * np.cos(e)]]).transpose(2, 0, 1)
    h[["Fx_kN", "Fy_kN", "Fz_kN"]] = np.einsum("nij,nj->ni", turn, h[["Fx_kN", "Fy_kN", "N_kN"]].to_numpy())
    # The movement turns so that the loads do the same work on it in both axes.
    pile_axes = h[["ux_m", "uy_m", "uz_m"]].to_numpy()[..., None]
    h[["ux_m", "uy_m", "uz_m"]] = np.linalg.solve(turn.transpose(0, 2, 1), pile_axes)[..., 0]
    return h.rename(columns={"T_kNm": "Mz_kNm"})


def same_columns(name, csv, frame, labels, keys, rounded=False):
    """Each CSV column against the frame's column of the same quantity, in the CSV's unit.
    rounded: the CSV's movements come from other printed values than the frame's."""
    frame = frame.sort_values(keys).reset_index(drop=True)
    csv = csv.sort_values(keys).reset_index(drop=True)
    assert csv[keys].equals(frame[keys].astype(csv[keys].dtypes)), name
    for header in csv.columns.drop(keys + ["name"], errors="ignore"):
        label, unit = re.fullmatch(r"(.+) \((.+)\)", header).groups()
        column = labels[label]
        mine = column.rsplit("_", 1)[1] if frame[column].dtype != object else "bool"
        factor = 1.0 if unit == mine else TO_CSV_UNIT[(unit, mine)]
        expected = frame[column].astype(float).to_numpy() * factor
        atol = 0.0
        if rounded and unit in ("mm", "mrad"):
            # Four digits each, and the document prints a head movement up to 0.1 mm as 0.
            atol = np.where(expected == 0, 0.1, 2e-3 * np.abs(expected).max())
        assert np.allclose(csv[header], expected, rtol=1e-5, atol=atol, equal_nan=True), (name, header)
    if "name" in csv:
        assert csv.name.equals(frame.name), name


@pytest.mark.skipif(not os.environ.get("QUELLON_CLI"), reason="needs the command-line host (run through ctest)")
@pytest.mark.parametrize("name", ALL)
def test_the_csv_columns_equal_the_xml_values(name, tmp_path):
    subprocess.run([os.environ["QUELLON_CLI"], "run", str(EXAMPLES / f"{name}.tmw"), "--out-dir", str(tmp_path),
                    "--quiet", "--no-txt"], check=True, capture_output=True)
    r = quellon.read_xml(tmp_path / f"{name}.xml")
    csv = {kind: pd.read_csv(tmp_path / f"{name}.{kind}.csv", keep_default_na=False, na_values=[""])
           for kind in ("heads", "profiles", "history") if (tmp_path / f"{name}.{kind}.csv").exists()}
    assert ("history" in csv) == r.nonlinear
    same_columns(name, csv["profiles"], profiles_from_head(r), PROFILE_CSV, ["increment", "pile", "element"])
    # The CSV's head movement comes from the cap's, the document's from the head element.
    same_columns(name, csv["heads"], heads_in_external_axes(r), HEADS_CSV, ["increment", "pile"], rounded=True)
    if r.nonlinear:
        same_columns(name, csv["history"], r.cap, HISTORY_CSV, ["increment"])

