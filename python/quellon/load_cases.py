"""Load cases: many loads on one model, worked by one run.

A model's own loads (`Model.loads`) stay the run's own increment. Besides them a run can
work named load cases, each six loads on the cap and the point where they act; a linear
run works every case from its own factorisation. `run` gives each case's results as the
frames of a run of its own (`Results.cases[name]`) and a summary frame with one row per
case (`Results.case_summary`), the table that `quellon run --load-cases` prints.

Cases come as a list of `LoadCase`, a DataFrame with the columns name, Fx, Fy, Fz, Mx,
My, Mz, X, Y, or the path of a CSV file with the same nine columns (a header row
optional), read by `read_load_cases` with the command-line host's rules and messages.
"""
from __future__ import annotations

import csv
import math
import os
import xml.etree.ElementTree as ET
from dataclasses import astuple, dataclass
from pathlib import Path

import numpy as np
import pandas as pd

from .model import QuellonError

COLUMNS = ("name", "Fx", "Fy", "Fz", "Mx", "My", "Mz", "X", "Y")


@dataclass
class LoadCase:
    """One load case: forces fx, fy, fz (kN; fz positive downward), moments mx, my, mz
    (kNm) about the axes through the point (x, y) (m) where they act, as `Loads`."""
    name: str
    fx: float = 0.0
    fy: float = 0.0
    fz: float = 0.0
    mx: float = 0.0
    my: float = 0.0
    mz: float = 0.0
    x: float = 0.0
    y: float = 0.0


def input_piles(inp: ET.Element) -> dict[int, dict]:
    """The piles of a document's <Input>: by number, each one's values and its name."""
    piles = {}
    for p in inp.iterfind("Piles/Pile"):
        d = {c.tag: float(c.get("value")) for c in p if "value" in c.attrib}
        d["name"] = p.findtext("Name", "")
        piles[int(p.get("number"))] = d
    return piles


def _number(text: str) -> float | None:
    t = text.strip()
    # As a spreadsheet writes numbers: digits, a point, a sign and an exponent only.
    if not t or "_" in t or t[0] not in "+-.0123456789":
        return None
    try:
        v = float(t)
    except ValueError:
        return None
    return v if math.isfinite(v) else None


def read_load_cases(path: str | os.PathLike) -> list[LoadCase]:
    """Reads a CSV file of load cases: one row per case, name, Fx, Fy, Fz, Mx, My, Mz, X, Y
    (kN, kNm, m). A first row with text, and no number, in all eight number columns is a
    header; blank rows are skipped. The file is UTF-8, or else Latin-1 (a spreadsheet's
    Western code page); the engine keeps names in Latin-1. The first fault raises
    `QuellonError` naming file, line and column ("cases.csv:7: column 4 (Fz): 'abc' is
    not a number"), with `line` set."""
    path = Path(path)
    cases: list[LoadCase] = []
    lines: dict[str, int] = {}
    data = path.read_bytes()
    try:
        text = data.decode("utf-8-sig").split("\n")
    except UnicodeDecodeError:                  # a spreadsheet's Western code page
        text = data.decode("latin-1").split("\n")
    first = True
    for number, raw in enumerate(text, start=1):
        def fail(why: str):
            return QuellonError(f"{path}:{number}: {why}", line=number)
        line = raw[:-1] if raw.endswith("\r") else raw
        if line.count('"') % 2:
            raise fail("a quoted field is not closed on its line")
        fields = [c.strip() for c in next(csv.reader([line], skipinitialspace=True), [""])] or [""]
        if all(not c for c in fields):
            continue
        if len(fields) != len(COLUMNS):
            why = f"{len(fields)} field{'s' if len(fields) != 1 else ''}; a load case has 9: " + ", ".join(COLUMNS)
            if len(fields) == 1 and ";" in line:
                why += " (separated by commas, not semicolons)"
            elif len(fields) > len(COLUMNS):
                why += " (a number takes a decimal point, not a comma)"
            raise fail(why)
        header, first = first and all(c and _number(c) is None for c in fields[1:]), False
        if header:
            continue
        name = fields[0]
        if not name:
            raise fail("column 1 (name): empty; every case needs a name")
        if name in lines:
            raise fail(f"column 1 (name): '{name}' names the case of line {lines[name]} already")
        values = []
        for c in range(1, len(COLUMNS)):
            where = f"column {c + 1} ({COLUMNS[c]}): "
            if not fields[c]:
                raise fail(where + "empty; write 0 for no load")
            v = _number(fields[c])
            if v is None:
                raise fail(where + f"'{fields[c]}' is not a number")
            values.append(v)
        lines[name] = number
        cases.append(LoadCase(name, *values))
    if not cases:
        raise QuellonError(f"{path}: holds no load case")
    return cases


def as_load_cases(cases) -> list[LoadCase]:
    """A list of `LoadCase` from a list of them, a DataFrame with the columns name, Fx ..
    Y, or the path of a CSV file. Names must be unique and not empty."""
    if cases is None:
        return []
    if isinstance(cases, (str, os.PathLike)):
        return read_load_cases(cases)
    if isinstance(cases, pd.DataFrame):
        missing = [c for c in COLUMNS if c not in cases.columns]
        if missing:
            raise QuellonError("load cases: the frame lacks the columns " + ", ".join(missing))
        out = [LoadCase(str(r[0]), *(float(v) for v in r[1:])) for r in cases[list(COLUMNS)].itertuples(index=False)]
    else:
        out = [c if isinstance(c, LoadCase) else LoadCase(*c) for c in cases]
    seen = set()
    for c in out:
        if not c.name or c.name in seen:
            raise QuellonError(f"load cases: the name {c.name!r} is empty or used twice")
        if not all(math.isfinite(v) for v in astuple(c)[1:]):
            raise QuellonError(f"load case {c.name!r}: a load or position is not a finite number")
        seen.add(c.name)
    return out


def send_load_cases(lib, cases: list[LoadCase], document: Path) -> None:
    """Hands the cases and the path of their document to the engine (after the model)."""
    for c in cases:
        raw = c.name.encode("latin-1", errors="replace")
        if lib.QuellonAddLoadCase(raw, len(raw), *astuple(c)[1:]) == 0:
            raise QuellonError(f"the engine refused the load case {c.name!r}")
    if lib.QuellonSetLoadCaseXMLFile(os.fsencode(document)) != 1:
        raise QuellonError(f"the engine refused the path of the cases document {document}")


def read_cases_xml(path: str | os.PathLike) -> dict:
    """Reads the document of a run's load cases: per case name, the `Results` of the case
    as a run of its own (cap, heads, profiles, piles; no stiffness), with
    `capacity_increment` set where a non-linear case stopped at the group's capacity."""
    from .results import EVERY_INCREMENT_FLAGS, _cap_row, _element_row, _flag, _frames
    piles: dict[int, dict] = {}
    flags, out = "", {}
    stack: list[str] = []
    caps: list[dict] = []
    rows: list[dict] = []
    nonlinear = False
    stopped = 0
    for event, el in ET.iterparse(path, events=("start", "end")):
        if event == "start":
            stack.append(el.tag)
            if stack[1:] == ["Load-Cases"]:
                nonlinear = el.get("nonlinear") == "1"
            elif stack[1:] == ["Load-Cases", "Load-Case"]:
                caps, rows, stopped = [], [], 0
            continue
        where = stack[1:]
        stack.pop()
        if where == ["Input"]:
            flags = (el.findtext("Flags") or "").strip()
            piles.update(input_piles(el))
            el.clear()
        elif where == ["Load-Cases", "Load-Case", "Increment"]:
            # The engine writes a case's increments one element each; an element holding
            # the blocks of several increments (the layout of the run's own output) is
            # numbered as the run's is.
            number, cap_blocks, pile_blocks = int(el.get("number")), el.findall("Pile-Cap"), el.findall("Piles")
            several = len(cap_blocks) > 1 or len(pile_blocks) > 1
            for k, cap in enumerate(cap_blocks, start=1):
                row = _cap_row(cap, k if several and _flag(flags, 25) else number)
                if all(c["increment"] != row["increment"] for c in caps):
                    caps.append(row)
            every = several and all(_flag(flags, f) for f in EVERY_INCREMENT_FLAGS)
            for k, block in enumerate(pile_blocks, start=1):
                for p in block.iterfind("Pile"):
                    rows.extend(_element_row(e, k if every else number, int(p.get("number")))
                                for e in p if e.tag in ("Element", "Toe"))
            el.clear()
        elif where == ["Load-Cases", "Load-Case", "Capacity-Reached"]:
            stopped = int(el.get("increment", "0"))
        elif where == ["Load-Cases", "Load-Case"]:
            r = _frames(piles, sorted(caps, key=lambda c: c["increment"]), rows, nonlinear)
            r.capacity_increment = stopped or None
            out[el.get("name", "")] = r
            el.clear()
    return out


GOVERNS = ("X", "Y", "Z", "about X", "about Y", "about Z", "compression", "tension", "moment")


def case_summary(cases: dict) -> pd.DataFrame:
    """One row per case, as the command-line table: the cap movement at the case's last
    increment (ux_mm .. rz_mrad), at the pile heads the largest axial force along a pile
    in compression and in tension (compression_kN, tension_kN, positive; NaN and pile 0
    where no pile is in tension) and the largest resultant head moment (moment_kNm), each
    with its pile; `governs` names the columns the case governs ("X; Z; compression"): the
    largest movement in size, the largest pile loads; cases that tie share a column, and
    a column that is 0 in every case has none. After a non-linear run `increment` is the
    case's last increment and `capacity_reached` whether its path stopped at the axial
    capacity of the group there."""
    rows = []
    for number, (name, r) in enumerate(cases.items(), start=1):
        row = {"case": number, "name": name}
        last = r.cap.iloc[-1] if len(r.cap) else None
        for c in ("ux_mm", "uy_mm", "uz_mm", "rx_mrad", "ry_mrad", "rz_mrad"):
            row[c] = float(last[c]) if last is not None else np.nan
        heads = r.profiles[(r.profiles.increment == r.profiles.increment.max()) & (r.profiles.element == 0)] \
            if len(r.profiles) else r.profiles
        for key in ("compression", "tension", "moment"):
            row[f"{key}_{'kNm' if key == 'moment' else 'kN'}"], row[f"{key}_pile"] = np.nan, 0
        if len(heads):
            n = heads.set_index("pile").N_kN
            m = np.hypot(heads.Mx_kNm, heads.My_kNm).set_axis(heads.pile)
            if n.max() > 0:
                row["compression_kN"], row["compression_pile"] = float(n.max()), int(n.idxmax())
            if n.min() < 0:
                row["tension_kN"], row["tension_pile"] = float(-n.min()), int(n.idxmin())
            row["moment_kNm"], row["moment_pile"] = float(m.max()), int(m.idxmax())
        if r.nonlinear:
            row["increment"] = int(r.cap.increment.iloc[-1]) if len(r.cap) else 0
            row["capacity_reached"] = r.capacity_increment is not None
        rows.append(row)
    frame = pd.DataFrame(rows)
    if frame.empty:
        return frame
    values = ["ux_mm", "uy_mm", "uz_mm", "rx_mrad", "ry_mrad", "rz_mrad", "compression_kN", "tension_kN", "moment_kNm"]
    governs = [[] for _ in range(len(frame))]
    for label, col in zip(GOVERNS, values):
        size = frame[col].abs().fillna(0.0)
        if size.max() > 0:
            for i in np.flatnonzero(size.to_numpy() == size.max()):
                governs[i].append(label)
    frame["governs"] = ["; ".join(g) for g in governs]
    return frame


__all__ = ["LoadCase", "read_load_cases", "as_load_cases", "read_cases_xml", "case_summary", "COLUMNS"]
