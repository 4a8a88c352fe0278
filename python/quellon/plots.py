"""Figures of a run's results, with matplotlib.

Every function takes a `Results`, draws one `matplotlib.figure.Figure` and returns it
(a notebook shows it); with `path` it also saves it (the format follows the suffix).
The figures are made without pyplot, so they work under any backend, Agg included.

Depth is drawn downward (Z positive downward, as the engine's axes).
"""
from __future__ import annotations

import os

import numpy as np
from matplotlib.figure import Figure

from .results import Results

_X, _Y = "tab:blue", "tab:orange"


def _save(fig: Figure, path: str | os.PathLike | None) -> Figure:
    if path is not None:
        fig.savefig(path, dpi=110)
    return fig


def _pile_list(results: Results, piles) -> list[int]:
    if piles is None:
        return [int(p) for p in results.piles.pile]
    return [int(p) for p in ([piles] if np.isscalar(piles) else piles)]


def profiles(results: Results, piles=None, increment: int | None = None,
             path: str | os.PathLike | None = None) -> Figure:
    """Bending moment, shear, axial force and lateral movement against depth for the
    chosen piles (numbers from 1; default all) at an increment (default the last).

    Four panels sharing the depth axis (m below ground): moments Mx, My (kNm) and shears
    Fx, Fy (kN) at the tops of the elements, the axial force N (kN) down to the toe, and
    the lateral movement ux, uy (mm). Components along X are solid, along Y dashed; the
    largest bending moment of each pile (resultant of Mx and My) is marked with a dot and
    given in the legend.
    """
    chosen = _pile_list(results, piles)
    fig = Figure(figsize=(12, 6.5), layout="constrained")
    grid = fig.subplot_mosaic([["m", "v", "n", "u"], ["key"] * 4], gridspec_kw={"height_ratios": [14, 1]})
    axes = [grid[k] for k in "mvnu"]
    for ax in axes[1:]:
        ax.sharey(axes[0])
        ax.tick_params(labelleft=False)
    titles = ["Bending moment (kNm)", "Shear force (kN)", "Axial force (kN)", "Lateral movement (mm)"]
    colours = [f"C{i % 10}" for i in range(len(chosen))]
    for pile, colour in zip(chosen, colours):
        prof = results.profile(pile, increment)
        if prof.empty:
            continue
        name = prof.name.iloc[0] or f"pile {pile}"
        shaft = prof[prof.element >= 1].iloc[:-1]     # shaft elements, without the toe
        loads = prof[prof.element <= prof.element.max() - 1]  # head and shaft, loads at tops
        z = loads.z_top_m
        axes[0].plot(loads.Mx_kNm, z, color=colour, label=f"{name} Mx")
        axes[0].plot(loads.My_kNm, z, color=colour, ls="--", label=f"{name} My")
        resultant = np.hypot(loads.Mx_kNm, loads.My_kNm)
        k = int(np.argmax(resultant.to_numpy()))
        mx, my = loads.Mx_kNm.iloc[k], loads.My_kNm.iloc[k]
        axes[0].plot([mx if abs(mx) >= abs(my) else my], [z.iloc[k]], "o", color=colour, ms=6)
        largest = f"{name}: largest M {resultant.iloc[k]:.0f} kNm at {z.iloc[k]:.1f} m"
        axes[1].plot(loads.Fx_kN, z, color=colour, label=f"{name} Fx")
        axes[1].plot(loads.Fy_kN, z, color=colour, ls="--", label=f"{name} Fy")
        axes[2].plot(prof.N_kN, prof.z_top_m, color=colour, label=largest)
        axes[3].plot(shaft.ux_m * 1000, shaft.z_mid_m, color=colour, label=f"{name} ux")
        axes[3].plot(shaft.uy_m * 1000, shaft.z_mid_m, color=colour, ls="--", label=f"{name} uy")
    for ax, title in zip(axes, titles):
        ax.set_title(title, fontsize=10)
        ax.axvline(0, color="0.6", lw=0.8)
        ax.grid(True, alpha=0.3)
    axes[0].set_ylabel("Depth below ground (m)")
    axes[0].invert_yaxis()
    grid["key"].axis("off")
    grid["key"].legend(*axes[2].get_legend_handles_labels(), loc="center", ncols=min(len(chosen), 3),
                       fontsize=9, frameon=False)
    if len(chosen) <= 3:
        axes[0].legend(fontsize=7, loc="lower left")
    inc = results.profiles.increment.max() if increment is None else increment
    fig.suptitle(f"Pile profiles at increment {inc} (X solid, Y dashed)")
    return _save(fig, path)


def plan(results: Results, path: str | os.PathLike | None = None) -> Figure:
    """Plan of the group (X right, Y up, m) with the loads at the pile heads at the last
    increment: the colour and label give the axial load (kN, compression positive), the
    arrow the horizontal load (Fx, Fy)."""
    h = results.heads
    fig = Figure(figsize=(7, 6), layout="constrained")
    ax = fig.subplots()
    span = max(float(np.ptp(h.x_m)), float(np.ptp(h.y_m)), 1.0)
    sc = ax.scatter(h.x_m, h.y_m, c=h.Fz_kN, s=300, cmap="viridis", edgecolors="k", zorder=2)
    fig.colorbar(sc, ax=ax, label="Axial load at the head (kN)")
    horizontal = np.hypot(h.Fx_kN, h.Fy_kN)
    scale = 0.25 * span / max(float(horizontal.max()), 1e-9)
    for _, r in h.iterrows():
        ax.annotate(f"{r['name'] or r['pile']}: {r.Fz_kN:.0f} kN", (r.x_m, r.y_m), textcoords="offset points",
                    xytext=(0, -16), ha="center", va="top", fontsize=8, zorder=3)
        if np.hypot(r.Fx_kN, r.Fy_kN) > 0:
            ax.annotate("", xy=(r.x_m + r.Fx_kN * scale, r.y_m + r.Fy_kN * scale), xytext=(r.x_m, r.y_m),
                        arrowprops=dict(arrowstyle="->", color="tab:red", lw=1.5), zorder=4)
    ax.text(0.01, 0.01, f"arrows: horizontal head load, largest {horizontal.max():.1f} kN",
            transform=ax.transAxes, fontsize=8, color="tab:red")
    pad = 0.3 * span
    ax.set_xlim(h.x_m.min() - pad, h.x_m.max() + pad)
    ax.set_ylim(h.y_m.min() - pad, h.y_m.max() + pad)
    ax.set_aspect("equal")
    ax.set_xlabel("X (m)")
    ax.set_ylabel("Y (m)")
    ax.grid(True, alpha=0.3)
    ax.set_title("Pile group plan: loads at the pile heads")
    return _save(fig, path)


def load_settlement(results: Results, path: str | os.PathLike | None = None) -> Figure:
    """The vertical load on the cap Fz (kN) against its settlement uz (mm), increment by
    increment from the unloaded state."""
    c = results.cap
    fig = Figure(figsize=(6.5, 5), layout="constrained")
    ax = fig.subplots()
    load = np.concatenate([[0.0], c.Fz_kN.to_numpy()])
    settlement = np.concatenate([[0.0], c.uz_mm.to_numpy()])
    ax.plot(load, settlement, "o-", color="tab:blue")
    ax.set_xlabel("Vertical load on the cap Fz (kN)")
    ax.set_ylabel("Settlement of the cap uz (mm)")
    ax.invert_yaxis()
    ax.grid(True, alpha=0.3)
    title = "Load-settlement curve"
    if results.stopped:
        title += " (stopped at the axial capacity)"
    ax.set_title(title)
    return _save(fig, path)


__all__ = ["profiles", "plan", "load_settlement"]
