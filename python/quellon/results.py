"""Running a model and reading its results.

`run` sends a `Model` through the engine's setters (or has the engine read a model
file), runs it and reads the XML output into pandas DataFrames and numpy arrays.

Report flags. The XML holds only what the model's flags ask for, so a run adds:
  - 25: the cap block (loads and movement) of every increment;
  - 35: the complete report of the last increment (pile heads and profiles, and in a
    linear run the group stiffness table);
  - 27, 28 and 31 (unless ``every_increment=False``): the pile block of every
    increment, so that profiles exist for each increment of a non-linear run.
The other flags stay as the model has them.

Axes are the engine's external axes: X and Y horizontal, Z positive downward, so a
compressive axial force and a settlement are positive. Moments Mx, My, Mz act about X,
Y and Z. The pile heads and profiles are in each pile's own axes, Z along the pile,
which are the external axes for a pile without rake. Units are in the column names.
"""
from __future__ import annotations

import ctypes
import os
import shutil
import xml.etree.ElementTree as ET
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
import pandas as pd

from . import _engine
from .load_cases import as_load_cases, case_summary, input_piles, read_cases_xml, send_load_cases
from .model import Model, QuellonError

REPORT_FLAGS = (25, 35)
EVERY_INCREMENT_FLAGS = (27, 28, 31)

@dataclass
class Results:
    """The results of one run.

    cap: one row per increment: increment; cumulative cap loads Fx_kN, Fy_kN, Fz_kN,
        Mx_kNm, My_kNm, Mz_kNm; cap movement ux_mm, uy_mm, uz_mm (uz is the settlement)
        and rotations rx_mrad, ry_mrad, rz_mrad about X, Y, Z.
    stiffness: one row per increment: the diagonal of the 6 by 6 group stiffness
        Kxx_kN_per_m, Kyy_kN_per_m, Kzz_kN_per_m, Krx_kNm_per_rad, Kry_kNm_per_rad,
        Krz_kNm_per_rad. The whole matrices are in `grmat`.
    grmat: array (increments, 6, 6): the group stiffness, rows and columns X, Y, Z,
        about X, about Y, about Z, in kN, kNm, m, rad (from the engine's stiffness
        callback: the XML carries the group stiffness of linear runs only).
    heads: one row per pile at the last increment: pile, name, x_m, y_m, the loads at
        the pile head Fx_kN, Fy_kN, Fz_kN (axial), Mx_kNm, My_kNm, Mz_kNm (torque) and its
        movement ux_m, uy_m, uz_m, twist_rad.
    profiles: one row per pile, element and increment: increment, pile, name, element
        (0 the free-standing part above ground, 1..n the shaft elements from the head,
        n + 1 the toe), s_top_m (distance along the pile from the soil entry point to
        the top of the element, where its loads act; for element 0 minus the length of
        the free-standing part along the pile; the pile length for the toe), length_m,
        z_top_m and z_mid_m (depth below ground of the top and of the mid-point,
        along-pile distance times the cosines of both rakes), the loads at the top of
        the element Fx_kN, Fy_kN (shears), N_kN (axial force), Mx_kNm, My_kNm (bending
        moments), T_kNm (torque), the movements ux_m, uy_m, uz_m, twist_rad, the soil
        stresses on the element stress_x_kPa, stress_y_kPa (normal, transverse),
        stress_torsion_kPa and stress_axial_kPa (shaft shear stress, or the bearing
        pressure at the toe), and in a non-linear run their limits (limit_*_kPa) and
        yield states (yield_*).
    messages: (severity, text) of the engine's messages during the run; severity 0
        info, 1 warning, 2 error, 3 critical. An orderly stop at the axial capacity of
        the group comes as an error message with a successful run.
    xml: the path of the XML output if it was kept, else None.
    mechanics: "corrected" for a run in the corrected mechanics (the XML root says so),
        else "as-defined".
    cases: for a run with load cases, per case name the case's `Results` (cap, heads,
        profiles, piles, as a run of its own with the case's loads; stiffness and grmat
        empty), read from the cases document (kept as MODEL.cases.xml with `keep`).
    case_summary: one row per case (see `quellon.load_cases.case_summary`), or None.
    capacity_increment: for a load case of a non-linear run whose path stopped at the
        axial capacity of the group, its last increment; else None.
    """
    cap: pd.DataFrame
    stiffness: pd.DataFrame
    grmat: np.ndarray
    heads: pd.DataFrame
    profiles: pd.DataFrame
    piles: pd.DataFrame
    messages: list[tuple[int, str]] = field(default_factory=list)
    nonlinear: bool = False
    xml: Path | None = None
    mechanics: str = "as-defined"
    cases: dict = field(default_factory=dict)
    case_summary: pd.DataFrame | None = None
    capacity_increment: int | None = None

    @property
    def increments(self) -> int:
        return len(self.cap)

    @property
    def stopped(self) -> str | None:
        """The engine's message if the run stopped at the axial capacity, else None."""
        for s, t in self.messages:
            if s >= 2 and "capacity" in t:
                return t
        return None

    def max_moments(self, increment: int | None = None) -> pd.DataFrame:
        """Per pile, the largest bending moment (resultant of Mx and My, kNm) at an
        increment (default the last), with its depth below ground (m) and along the pile."""
        inc = self.profiles.increment.max() if increment is None else increment
        p = self.profiles[(self.profiles.increment == inc) & self.profiles.Mx_kNm.notna()].copy()
        p["M_kNm"] = np.hypot(p.Mx_kNm, p.My_kNm)
        top = p.loc[p.groupby("pile").M_kNm.idxmax()]
        return top[["pile", "name", "M_kNm", "Mx_kNm", "My_kNm", "z_top_m", "s_top_m"]].rename(
            columns={"z_top_m": "depth_m", "s_top_m": "along_pile_m"}).reset_index(drop=True)

    def profile(self, pile: int, increment: int | None = None) -> pd.DataFrame:
        """The profile of one pile (numbered from 1) at an increment (default the last)."""
        inc = self.profiles.increment.max() if increment is None else increment
        p = self.profiles
        return p[(p.pile == pile) & (p.increment == inc)].reset_index(drop=True)


def _set_flags(flags: str, on: tuple[int, ...], off: tuple[int, ...] = ()) -> str:
    f = list(flags)
    for i in on:
        f[i - 1] = "1"
    for i in off:
        f[i - 1] = "0"
    return "".join(f)


MECHANICS = {"as-defined": 0, "corrected": 1}


def run(model: Model | str | os.PathLike, *, every_increment: bool = True,
        keep: str | os.PathLike | None = None, quiet: bool = True,
        mechanics: str = "as-defined", load_cases=None) -> Results:
    """Runs a model and returns its `Results`.

    model: a `Model` (sent through the setters) or the path of a text model file (read by
    the engine itself). every_increment: profiles of every increment (else of the last).
    keep: a directory in which the XML output and the TXT report stay (named after the
    model). quiet: keep the engine's lines on standard output away. mechanics:
    "as-defined" (the method as it is defined, the default) or "corrected" (the first-order
    unit twist, torsion between piles under any load, the whole section compared before a
    pile matrix is reused, the rigid twist of a pile raked both ways; see docs/mechanics.md).
    load_cases: cases the run works besides the model's own loads (a list of `LoadCase`, a
    DataFrame or a CSV path); by default a `Model`'s `load_cases`. They fill `Results.cases`
    and `Results.case_summary`.

    Only one run at a time per process: the engine has one model, and runs from other
    threads wait for the lock. Raises `QuellonError` with the engine's messages if the
    model is refused or the run fails.
    """
    if mechanics not in MECHANICS:
        raise ValueError(f"mechanics must be one of {sorted(MECHANICS)}, not {mechanics!r}")
    cases = as_load_cases(load_cases if load_cases is not None or not isinstance(model, Model)
                          else model.load_cases)
    with _engine.session() as (lib, record, tmp):
        # The engine keeps the mode from run to run: every run sets its own.
        lib.QuellonSetMechanics(MECHANICS[mechanics])
        if isinstance(model, Model):
            flags = model.flags
            stem = "model"
            _engine.send(lib, record, tmp, model)
        else:
            path = Path(model)
            stem = path.stem
            _engine.load_file(lib, record, tmp, path)
            flags = _engine.file_flags(path)
        on = REPORT_FLAGS + (EVERY_INCREMENT_FLAGS if every_increment else ())
        off = () if every_increment else EVERY_INCREMENT_FLAGS
        flags = _set_flags(flags, on, off)
        lib.QuellonSetProjectFlags((ctypes.c_int * 40)(*[int(c) for c in flags]), 40)
        xml, txt = tmp / f"{stem}.xml", tmp / f"{stem}.txt"
        document = tmp / f"{stem}.cases.xml"
        if cases:
            try:
                send_load_cases(lib, cases, document)
            except QuellonError:
                _engine.discard(lib, tmp)
                raise
        with _engine.quiet_stdout(quiet):
            ok = lib.QuellonRunAnalysis2(os.fsencode(xml), os.fsencode(txt))
        lib.QuellonCloseAllFiles()
        if ok != 1:
            errors = record.errors() or ["the run failed"]
            raise QuellonError("; ".join(errors), errors)
        results = read_xml(xml)
        results.grmat = np.array(record.grmat) if record.grmat else np.zeros((0, 6, 6))
        results.stiffness = _stiffness_frame(results.grmat)
        results.messages = list(record.messages)
        if cases:
            results.cases = read_cases_xml(document)
            results.case_summary = case_summary(results.cases)
        if keep is not None:
            out = Path(keep)
            out.mkdir(parents=True, exist_ok=True)
            shutil.copy(xml, out / xml.name)
            shutil.copy(txt, out / txt.name)
            if cases:
                shutil.copy(document, out / document.name)
            results.xml = out / xml.name
        return results


def _stiffness_frame(grmat: np.ndarray) -> pd.DataFrame:
    names = ["Kxx_kN_per_m", "Kyy_kN_per_m", "Kzz_kN_per_m",
             "Krx_kNm_per_rad", "Kry_kNm_per_rad", "Krz_kNm_per_rad"]
    rows = [dict(increment=i + 1, **{n: float(g[j, j]) for j, n in enumerate(names)})
            for i, g in enumerate(grmat)]
    return pd.DataFrame(rows, columns=["increment"] + names)


_STRESS = {("Normal-Stress", "X"): "x", ("Normal-Stress", "Y"): "y",
           ("Torsional-Stress", "Z"): "torsion", ("Shear-Stress", ""): "axial",
           ("Bearing-Pressure", ""): "axial"}
_LOAD = {("Force", "X"): "Fx_kN", ("Force", "Y"): "Fy_kN", ("Force", "Z"): "N_kN",
         ("Moment", "X"): "Mx_kNm", ("Moment", "Y"): "My_kNm", ("Moment", "Z"): "T_kNm",
         ("Displacement", "X"): "ux_m", ("Displacement", "Y"): "uy_m",
         ("Displacement", "Z"): "uz_m", ("Rotation", "Z"): "twist_rad"}
_CAP = {("Actions", "Force"): "F{}_kN", ("Actions", "Moment"): "M{}_kNm",
        ("Effects", "Displacement"): "u{}_mm", ("Effects", "Rotation"): "r{}_mrad"}


def read_xml(path: str | os.PathLike) -> Results:
    """Reads an XML output into `Results` (without `grmat`, which the XML lacks).

    The document is parsed as XML, so its layout in lines does not matter and names
    written in CDATA sections (those holding "<" or "&") come back as they were set. A
    document that is not well-formed, such as the unterminated one of a failed run,
    raises `xml.etree.ElementTree.ParseError`.

    The run's own increment element, the first of the output, holds the blocks of every
    increment that asked for them, in order: with the cap block (flag 25) or the pile
    blocks (27, 28 and 31) set from the start, one block per increment run; otherwise the
    complete report of the last increment alone, which belongs to the element's number.
    The elements after it summarise the earlier increments: cap loads and movements,
    taken where the run's element has no cap block for them. The document is read as a
    stream, one block at a time, so a large run needs no tree of its own size.
    """
    piles: dict[int, dict] = {}
    caps: list[dict] = []
    rows: list[dict] = []
    nonlinear = False
    flags = ""
    own = 0                 # the number of the run's increment element
    runs = 0                # increment elements of the output: the first is the run's
    blocks = 0              # pile blocks read
    stack: list[str] = []
    mechanics = "as-defined"
    for event, el in ET.iterparse(path, events=("start", "end")):
        if event == "start":
            stack.append(el.tag)
            if len(stack) == 1 and el.get("mechanics") == "corrected":
                mechanics = "corrected"
            if stack == ["Tolmark", "Output", "Increment"]:
                runs += 1
                if runs == 1:
                    own = int(el.get("number"))
            elif stack[0] != "Tolmark":
                raise ValueError(f"{path}: not an output of the engine (root element {stack[0]})")
            continue
        where = stack[1:]
        stack.pop()
        if where == ["Input"]:
            nonlinear = (el.findtext("NonLinear") or "").strip() == "1"
            flags = (el.findtext("Flags") or "").strip()
            piles.update(input_piles(el))
            el.clear()
        elif runs == 1 and where == ["Output", "Increment", "Pile-Cap"]:
            caps.append(_cap_row(el, len(caps) + 1 if _flag(flags, 25) else own))
            el.clear()
        elif runs == 1 and where == ["Output", "Increment", "Piles"]:
            blocks += 1
            increment = blocks if all(_flag(flags, f) for f in EVERY_INCREMENT_FLAGS) else own
            for p in el.iterfind("Pile"):
                number = int(p.get("number"))
                rows.extend(_element_row(e, increment, number) for e in p if e.tag in ("Element", "Toe"))
            el.clear()
        elif where == ["Output", "Increment"] and runs > 1:
            # The summary of an earlier increment: its cap loads and movement, where the
            # run's element lacks them.
            number, cap = int(el.get("number")), el.find("Pile-Cap")
            if cap is not None and all(c["increment"] != number for c in caps):
                caps.append(_cap_row(cap, number))
            el.clear()
    caps.sort(key=lambda c: c["increment"])
    results = _frames(piles, caps, rows, nonlinear)
    results.mechanics = mechanics
    return results


def _flag(flags: str, i: int) -> bool:
    return len(flags) >= i and flags[i - 1] == "1"


def _cap_row(cap: ET.Element, increment: int) -> dict:
    row: dict = {"increment": increment}
    for block in cap:
        for c in block:
            axis = c.get("axis", "").lower()
            if block.tag == "Centre-Of-Rotation":
                row[f"centre_{axis}_m"] = float(c.get("value"))
            elif (block.tag, c.tag) in _CAP:
                row[_CAP[(block.tag, c.tag)].format(axis)] = float(c.get("value"))
    return row


def _element_row(el: ET.Element, increment: int, pile: int) -> dict:
    row: dict = {"increment": increment, "pile": pile,
                 "element": int(el.get("number")) if el.tag == "Element" else -1}
    for c in el:
        if "value" not in c.attrib:
            continue
        key, value = (c.tag, c.get("axis", "")), float(c.get("value"))
        if key in _STRESS:
            s = _STRESS[key]
            row[f"stress_{s}_kPa"] = value
            if "limit" in c.attrib:
                row[f"limit_{s}_kPa"] = float(c.get("limit"))
                row[f"yield_{s}"] = c.get("yield") == "true"
        elif key in _LOAD:
            row[_LOAD[key]] = value
        elif c.tag == "Depth":
            row["s_top_m"] = value
        elif c.tag == "Length":
            row["length_m"] = value
    return row


def _frames(piles: dict, caps: list[dict], rows: list[dict], nonlinear: bool) -> Results:
    cap_cols = ["increment", "Fx_kN", "Fy_kN", "Fz_kN", "Mx_kNm", "My_kNm", "Mz_kNm",
                "ux_mm", "uy_mm", "uz_mm", "rx_mrad", "ry_mrad", "rz_mrad", "centre_x_m", "centre_y_m"]
    cap = pd.DataFrame(caps, columns=cap_cols)
    info = pd.DataFrame([{
        "pile": p, "name": d.get("name", ""), "x_m": d.get("XPosition", 0.0), "y_m": d.get("YPosition", 0.0),
        "z_m": d.get("ZPosition", 0.0), "length_m": d.get("EmbeddedLength", 0.0),
        "free_standing_m": d.get("FreeStandingLength", 0.0), "shaft_diameter_m": d.get("ExternalDiameter", 0.0),
        "base_diameter_m": d.get("BaseDiameter", 0.0), "rake_x_deg": d.get("XRake", 0.0),
        "rake_y_deg": d.get("YRake", 0.0)} for p, d in sorted(piles.items())])
    prof = pd.DataFrame(rows)
    if not prof.empty:
        prof = prof.merge(info[["pile", "name", "length_m", "rake_x_deg", "rake_y_deg"]].rename(
            columns={"length_m": "pile_length_m"}), on="pile")
        n = int(prof.element.max())
        toe = prof.element == -1
        prof.loc[toe, "element"] = n + 1
        prof.loc[toe, "length_m"] = 0.0
        prof["length_m"] = prof["length_m"].fillna(0.0)
        cosines = np.cos(np.radians(prof.rake_x_deg)) * np.cos(np.radians(prof.rake_y_deg))
        # The document gives the free-standing part its vertical height; along a raked
        # pile it is longer.
        head = prof.element == 0
        prof.loc[head, "s_top_m"] = prof.s_top_m[head] / cosines[head]
        prof.loc[head, "length_m"] = prof.length_m[head] / cosines[head]
        prof["z_top_m"] = prof.s_top_m * cosines
        prof["z_mid_m"] = (prof.s_top_m + prof.length_m / 2) * cosines
        prof = prof.drop(columns=["pile_length_m", "rake_x_deg", "rake_y_deg"])
        first = ["increment", "pile", "name", "element", "s_top_m", "length_m", "z_top_m", "z_mid_m",
                 "Fx_kN", "Fy_kN", "N_kN", "Mx_kNm", "My_kNm", "T_kNm", "ux_m", "uy_m", "uz_m", "twist_rad"]
        rest = sorted(c for c in prof.columns if c not in first)
        prof = prof[first + rest].sort_values(["increment", "pile", "element"]).reset_index(drop=True)
        last = prof[(prof.increment == prof.increment.max()) & (prof.element == 0)]
        heads = last[["pile", "name", "Fx_kN", "Fy_kN", "N_kN", "Mx_kNm", "My_kNm", "T_kNm",
                      "ux_m", "uy_m", "uz_m", "twist_rad"]].rename(columns={"N_kN": "Fz_kN", "T_kNm": "Mz_kNm"})
        heads = heads.merge(info[["pile", "x_m", "y_m"]], on="pile")
        heads = heads[["pile", "name", "x_m", "y_m"] + [c for c in heads.columns
                                                       if c not in ("pile", "name", "x_m", "y_m")]]
    else:
        heads = pd.DataFrame()
    return Results(cap=cap, stiffness=pd.DataFrame(), grmat=np.zeros((0, 6, 6)), heads=heads.reset_index(drop=True),
                   profiles=prof, piles=info, nonlinear=nonlinear)


__all__ = ["run", "read_xml", "Results", "REPORT_FLAGS", "EVERY_INCREMENT_FLAGS", "QuellonError"]
