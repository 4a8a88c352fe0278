#!/usr/bin/python3
"""Runs models with quellon in both mechanics and prints the differences as Markdown.

usage: /usr/bin/python3 docs/mechanics/compare.py QUELLON OUT_DIR MODEL.tmw ...

For each model and mode: the cap movement of the last increment (from the summary), the
group stiffness about Z, and from MODEL.heads.csv the largest pile head loads of the last
increment: axial force, shear (resultant of X and Y), bending moment (resultant) and torque.
"""
import csv
import math
import subprocess
import sys
from pathlib import Path

MODES = ("as-defined", "corrected")


def run(quellon, model, out, mode):
    out.mkdir(parents=True, exist_ok=True)
    cmd = [quellon, "run", str(model), "--out-dir", str(out), "--quiet", "--no-warnings", "--mechanics", mode]
    text = subprocess.run(cmd, check=True, capture_output=True, text=True).stdout.splitlines()
    cap = next(text[i + 2] for i, l in enumerate(text) if "Cap movement after increment" in l)
    krz = next(l for l in text if "about Z (kNm/rad)" in l and "mrad" not in l)
    rows = list(csv.DictReader(open(out / (model.stem + ".heads.csv"), newline="")))
    last = max(int(r["increment"]) for r in rows)
    rows = [r for r in rows if int(r["increment"]) == last]
    f = lambda r, k: float(r[k] or 0.0)
    return {
        "cap": [float(v) for v in cap.split()],
        "krz": float(krz.split()[-1]),
        "N": max(abs(f(r, "Fz (kN)")) for r in rows),
        "V": max(math.hypot(f(r, "Fx (kN)"), f(r, "Fy (kN)")) for r in rows),
        "M": max(math.hypot(f(r, "Mx (kNm)"), f(r, "My (kNm)")) for r in rows),
        "T": max(abs(f(r, "Mz (kNm)")) for r in rows),
    }


def main(quellon, out, *models):
    print("| model | mechanics | X, Y, Z (mm) | about X, Y, Z (mrad) | K about Z (kNm/rad) "
          "| max N (kN) | max V (kN) | max M (kNm) | max T (kNm) |")
    print("|---|---|---|---|---|---|---|---|---|")
    for m in map(Path, models):
        for mode in MODES:
            r = run(quellon, m, Path(out) / mode, mode)
            c = r["cap"]
            print(f"| {m.stem} | {mode} | {c[0]:.3f}, {c[1]:.3f}, {c[2]:.3f} | {c[3]:.4f}, {c[4]:.4f}, {c[5]:.4f} "
                  f"| {r['krz']:.5g} | {r['N']:.1f} | {r['V']:.1f} | {r['M']:.1f} | {r['T']:.1f} |")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
