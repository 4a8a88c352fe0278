#!/usr/bin/env python3
"""A parametric study: the settlement ratio of a 3 x 3 pile group against the spacing.

The settlement ratio is the settlement of the group divided by that of a single pile
carrying the group's mean pile load. Nine 0.6 m piles, 15 m long, in dense sand over
gravel (as examples/group_3x3_combined.tmw), at centres from 2 to 6 diameters, under
9000 kN. Prints a table and saves a plot (parametric_spacing.png, or the path given).

Run from the repository after building (the package finds build/libquellon.so):
    /usr/bin/python3 examples/parametric_spacing.py [PLOT.png]
"""
import sys
from pathlib import Path

try:
    import quellon
except ImportError:  # not installed: use the package of this repository
    sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))
    import quellon
from quellon import Layer, Loads, Model, Pile

D, LENGTH, LOAD = 0.6, 15.0, 9000.0
GROUND = [Layer(name="Dense sand", depth=0, ev=30000, dev=3000, eh=25000, deh=2500, poisson=0.3),
          Layer(name="Sandy gravel", depth=10, ev=90000, eh=80000, poisson=0.25)]


def pile(x, y):
    return Pile(x=x, y=y, length=LENGTH, shaft_diameter=D, ea=8482, eix=191, eiy=191, gj=159)


def settlement_mm(piles, load):
    model = Model(piles=piles, layers=GROUND, elements=12, loads=Loads(fz=load))
    return quellon.run(model, every_increment=False).cap.uz_mm.iloc[-1]


def main(plot_path="parametric_spacing.png"):
    single = settlement_mm([pile(0, 0)], LOAD / 9)
    rows = []
    for ratio in (2, 3, 4, 5, 6):
        s = ratio * D
        group = settlement_mm([pile(s * i, s * j) for j in (-1, 0, 1) for i in (-1, 0, 1)], LOAD)
        rows.append((ratio, s, group, group / single))
    print(f"Single pile under {LOAD / 9:.0f} kN settles {single:.2f} mm")
    print(f"{'s/D':>4} {'s (m)':>6} {'group (mm)':>11} {'ratio':>6}")
    for ratio, s, group, rs in rows:
        print(f"{ratio:>4} {s:>6.1f} {group:>11.2f} {rs:>6.2f}")

    from matplotlib.figure import Figure
    fig = Figure(figsize=(6, 4.5), layout="constrained")
    ax = fig.subplots()
    ax.plot([r[0] for r in rows], [r[3] for r in rows], "o-")
    ax.set_xlabel("Pile spacing s/D")
    ax.set_ylabel("Settlement ratio (group / single pile)")
    ax.set_title("3 x 3 group, 0.6 m piles, 15 m long, 9000 kN")
    ax.grid(True, alpha=0.3)
    fig.savefig(plot_path, dpi=110)
    print(f"Plot: {plot_path}")


if __name__ == "__main__":
    main(*sys.argv[1:2])
