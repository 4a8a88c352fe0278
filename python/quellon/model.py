"""The analysis model in Python: named fields, units in the docstrings.

Axes: X and Y horizontal, Z positive downward. Units: m, kN, kNm, kPa, kN/m^3 and
degrees; section stiffnesses in MN and MNm^2, as in the text model file.

A `Model` is plain data. `Model.read` has the engine's own reader check a text model
file and takes the values from the same file; `Model.write` sends the model through
the engine's setters and has the engine write it as a TMK file. `quellon.run` sends
it through the setters and runs it.
"""
from __future__ import annotations

import ctypes
import datetime as _dt
import os
import re
from dataclasses import dataclass, field
from pathlib import Path


class QuellonError(RuntimeError):
    """The engine refused a model or a run failed. `messages` holds the engine's error
    messages (its own words), `line` the line of a model file where the reader stopped."""

    def __init__(self, text: str, messages: list[str] | None = None, line: int | None = None):
        super().__init__(text)
        self.messages = list(messages or [])
        self.line = line


@dataclass
class Pile:
    """One pile. Lengths in m, rakes in degrees, section stiffnesses in MN and MNm^2.

    x, y, z: the head position (m). length: embedded length below the soil entry point
    (m). shaft_diameter, internal_diameter (0 for a solid pile), base_diameter (m).
    rake_x, rake_y: degrees; a positive rake carries the lower end towards negative X
    or Y. ea (MN), eix, eiy, gj (MNm^2): the section, over the reinforced length if
    reinforced_length > 0 (m from the soil entry point), else over the whole pile.
    unreinforced_ea .. unreinforced_gj: the section below the reinforced length; None
    takes the section above.
    """
    x: float
    y: float
    length: float
    shaft_diameter: float
    ea: float
    eix: float
    eiy: float
    gj: float
    z: float = 0.0
    base_diameter: float | None = None
    internal_diameter: float = 0.0
    rake_x: float = 0.0
    rake_y: float = 0.0
    name: str = ""
    reinforced_length: float = 0.0
    unreinforced_ea: float | None = None
    unreinforced_eix: float | None = None
    unreinforced_eiy: float | None = None
    unreinforced_gj: float | None = None


@dataclass
class Layer:
    """One horizontal soil layer, from its top down to the next layer's top.

    depth: depth of the top below ground (m). ev, eh: vertical and horizontal Young's
    moduli at the top (kPa); dev, deh: their gradients with depth (kN/m^3). poisson: -.
    For non-linear runs the ground: ground_type 1 coarse soil (phi, delta in degrees,
    ks), 2 fine soil (cu in kPa, dcu in kN/m^3, alpha), 3 rock (qu in kPa as the file
    holds it, k = five interface parameters), 4 direct values (direct_skin_friction,
    direct_end_bearing, direct_lateral in kPa; no setter exists for these, so such a
    model runs only when read from a file); weight_density (kN/m^3);
    max_skin_friction, max_bearing_pressure (kPa, 0 for none).
    """
    depth: float
    ev: float
    eh: float
    dev: float = 0.0
    deh: float = 0.0
    poisson: float = 0.3
    name: str = ""
    ground_name: str = ""
    ground_type: int = 0
    weight_density: float = 0.0
    max_skin_friction: float = 0.0
    max_bearing_pressure: float = 0.0
    phi: float = 0.0
    delta: float = 0.0
    ks: float = 0.0
    cu: float = 0.0
    dcu: float = 0.0
    alpha: float = 0.0
    qu: float = 0.0
    k: tuple[float, float, float, float, float] = (0.0, 0.0, 0.0, 0.0, 0.0)
    direct_skin_friction: float = 0.0
    direct_end_bearing: float = 0.0
    direct_lateral: float = 0.0


@dataclass
class Loads:
    """Loads on the cap: forces fx, fy, fz (kN; fz positive downward, so a compressive
    load is positive), moments mx, my, mz (kNm) about the axes through the point (x, y)
    (m) at which they act."""
    fx: float = 0.0
    fy: float = 0.0
    fz: float = 0.0
    mx: float = 0.0
    my: float = 0.0
    mz: float = 0.0
    x: float = 0.0
    y: float = 0.0


# The report flags the engine's classic hosts set by default: project echo (2), the LAPACK
# solver (16), and the usual TXT and XML blocks.
DEFAULT_FLAGS = "0100000000000001001011111011001000000000"


@dataclass
class Model:
    """A whole analysis model.

    piles, layers: lists of `Pile` and `Layer`. elements: shaft elements per pile (at
    most 50). increments: 1 for a linear analysis, 2 or more for a non-linear one with
    the load applied in equal steps. loads: `Loads` on the cap. load_cases: named load
    cases that a run works besides `loads` (see `quellon.load_cases`).
    interaction: 1 every pile pair interacts, 2 up to 50 shaft diameters, 3 up to
    interaction_distance (m). depth_to_rigid_layer (m below ground, 0 for none).
    layer_averaging: 1 Poulos, 2 Yamashita. free_standing_length (m above ground,
    the same for every pile). flags: the 40 report and option flags as a string of
    digits (flag 1 first). Non-linear runs also use overburden (kPa),
    elastic_unloading, auto_nq / nq, limiting_shaft_friction and
    limiting_bearing_pressure (kPa, 0 for none) and the hyperbolic factors rs, rb, rl,
    rt (each below 1).
    """
    piles: list[Pile] = field(default_factory=list)
    layers: list[Layer] = field(default_factory=list)
    loads: Loads = field(default_factory=Loads)
    elements: int = 10
    increments: int = 1
    name: str = ""
    description: str = ""
    date: _dt.date = field(default_factory=_dt.date.today)
    filename: str = ""
    flags: str = DEFAULT_FLAGS
    interaction: int = 2
    interaction_distance: float = 0.0
    depth_to_rigid_layer: float = 0.0
    layer_averaging: int = 1
    free_standing_length: float = 0.0
    cap_stiffness: int = 0
    overburden: float = 0.0
    elastic_unloading: bool = False
    auto_nq: bool = True
    nq: float = 0.0
    limiting_shaft_friction: float = 0.0
    limiting_bearing_pressure: float = 0.0
    rs: float = 0.5
    rb: float = 0.5
    rl: float = 0.5
    rt: float = 0.5
    # Load cases worked by the run besides `loads`: a list of `quellon.LoadCase`, a
    # DataFrame with the columns name, Fx, Fy, Fz, Mx, My, Mz, X, Y, or the path of such a
    # CSV file. The run sends them; the TMK file and the text model file don't hold them.
    load_cases: list = field(default_factory=list)

    # ---- files -------------------------------------------------------------------
    @classmethod
    def read(cls, path: str | os.PathLike) -> "Model":
        """Reads a text model file (TMW). The engine's reader checks it first, and a file
        it refuses raises `QuellonError` with the reader's messages and line; the values
        are then taken from the same file in full precision."""
        from . import _engine
        path = Path(path)
        _engine.check_file(path)
        return parse_model_text(path.read_bytes().decode("latin-1"))

    def write(self, path: str | os.PathLike) -> None:
        """Writes the model as a TMK file through the engine's setters and its writer."""
        from . import _engine
        _engine.write_tmk(self, Path(path))

    # ---- sending the model through the setters -------------------------------------
    def send(self, lib) -> None:
        """Fills the engine's one model through its setters, in the calling order the
        engine asks for (tables first). Raises `QuellonError` for what the setters cannot
        carry or refuse."""
        def call(name, *args):
            if getattr(lib, name)(*args) != 1:
                raise QuellonError(f"the engine refused {name}{args}")

        def text(name, s, *lead):
            raw = _latin1(s)
            call(name, *lead, raw, len(raw))

        if len(self.flags) != 40 or set(self.flags) - set("0123456789"):
            raise QuellonError("flags must be a string of 40 digits")
        flags = (ctypes.c_int * 40)(*[0 if c == "0" else 1 for c in self.flags])
        text("QuellonSetProjectName", self.name)
        text("QuellonSetProjectDescription", self.description)
        call("QuellonSetProjectDate", self.date.year, self.date.month, self.date.day)
        text("QuellonSetProjectFilename", self.filename)
        call("QuellonSetProjectFlags", flags, 40)
        call("QuellonSetNumberOfLoadIncrements", int(self.increments))
        call("QuellonSetNumberOfPiles", len(self.piles))
        call("QuellonSetNumberOfPileElements", int(self.elements))
        call("QuellonSetPileCapStiffness", int(self.cap_stiffness))
        for i, p in enumerate(self.piles, start=1):
            base = p.shaft_diameter if p.base_diameter is None else p.base_diameter
            text("QuellonSetPileName", p.name, i)
            call("QuellonSetPileCoordinates", i, p.x, p.y, p.z)
            call("QuellonSetPileDimensions", i, p.length, p.shaft_diameter, p.internal_diameter, base)
            call("QuellonSetPileRake", i, p.rake_x, p.rake_y)
            call("QuellonSetPileReinforcedSectionProperties", i, p.reinforced_length, p.ea, p.eix, p.eiy, p.gj)
            # As the file reader does: a missing section below takes the one above.
            under = [u if u is not None and u > 0 else a for u, a in (
                (p.unreinforced_ea, p.ea), (p.unreinforced_eix, p.eix),
                (p.unreinforced_eiy, p.eiy), (p.unreinforced_gj, p.gj))]
            call("QuellonSetPileUnreinforcedSectionProperties", i, *under)
        if self.interaction == 3:
            call("QuellonSetPileInteractionDistance", self.interaction_distance)
        else:
            call("QuellonSetPileInteractionFlag", int(self.interaction))
        call("QuellonSetBoreholeDepthToRigidLayer", self.depth_to_rigid_layer)
        call("QuellonSetBoreholeNumberOfLayers", len(self.layers))
        call("QuellonSetBoreholeLayerAveraging", int(self.layer_averaging))
        nonlinear = self.increments > 1
        for i, l in enumerate(self.layers, start=1):
            text("QuellonSetBoreholeLayerName", l.name, i)
            call("QuellonSetBoreholeLayerDepth", i, l.depth)
            call("QuellonSetBoreholeLayerStiffness", i, l.ev, l.dev, l.eh, l.deh, l.poisson)
            if not nonlinear:
                continue
            if l.ground_type == 4:
                raise QuellonError(f"layer {i}: ground type 4 (direct values) has no setter in the "
                                   "engine's interface; read such a model from a file")
            text("QuellonSetGroundName", l.ground_name, i)
            call("QuellonSetGroundType", i, int(l.ground_type))
            call("QuellonSetGroundWeightDensity", i, l.weight_density)
            call("QuellonSetGroundMaximumSkinFriction", i, l.max_skin_friction)
            call("QuellonSetGroundMaximumBearingPressure", i, l.max_bearing_pressure)
            if l.ground_type == 1:
                call("QuellonSetSoilAngleOfFriction", i, l.phi)
                call("QuellonSetSoilDrainedInterfaceParameter", i, l.delta)
                call("QuellonSetSoilEarthPressureCoefficient", i, l.ks)
            elif l.ground_type == 2:
                call("QuellonSetSoilUndrainedShearStrength", i, l.cu, l.dcu)
                call("QuellonSetSoilUndrainedInterfaceParameter", i, l.alpha)
            elif l.ground_type == 3:
                call("QuellonSetRockStrength", i, l.qu)
                call("QuellonSetRockInterfaceParameters", i, *l.k)
        if nonlinear:
            call("QuellonSetBoreholeOverburden", self.overburden)
            call("QuellonSetProjectElasticUnloadingFlag", 1 if self.elastic_unloading else 0)
            call("QuellonSetProjectNq", 1 if self.auto_nq else 0, self.nq)
            call("QuellonSetProjectLimitingShaftFriction", self.limiting_shaft_friction)
            call("QuellonSetProjectLimitingBearingPressure", self.limiting_bearing_pressure)
            call("QuellonSetProjectHyperbolicFactors", self.rs, self.rb, self.rl, self.rt)
        call("QuellonSetPileFreeStandingLength", self.free_standing_length)
        ld = self.loads
        call("QuellonSetActions", ld.fx, ld.fy, ld.fz, ld.mx, ld.my, ld.mz, ld.x, ld.y)



def _latin1(s: str) -> bytes:
    return s.encode("latin-1", errors="replace")


# ---- reading the text model file ---------------------------------------------------
class _Lines:
    """The lines of a text model file, read as the engine reads them: fixed lines whole,
    numbers free-form, going on over lines until enough are found and dropping the rest
    of the last line."""

    _number = re.compile(r"[-+]?(?:\d+\.?\d*|\.\d+)(?:[eEdD][-+]?\d+)?")

    def __init__(self, text: str):
        self.lines = text.replace("\r\n", "\n").replace("\r", "\n").split("\n")
        self.at = 0

    def line(self) -> str:
        if self.at >= len(self.lines):
            raise QuellonError("the model file ends early", line=self.at)
        s = self.lines[self.at]
        self.at += 1
        return s

    def skip(self, n: int = 1) -> None:
        for _ in range(n):
            self.line()

    def numbers(self, n: int) -> list[float]:
        found: list[float] = []
        while len(found) < n:
            for tok in re.split(r"[\s,]+", self.line().strip()):
                if tok and len(found) < n:
                    if not self._number.fullmatch(tok):
                        raise QuellonError(f"not a number: {tok!r}", line=self.at)
                    found.append(float(tok.replace("d", "e").replace("D", "e")))
        return found


def parse_model_text(text: str) -> Model:
    """The values of a text model file (with its comment lines) as a `Model`."""
    r = _Lines(text)
    m = Model(flags="0" * 40)
    r.skip(2)                                   # version, checked by the engine
    r.skip(); m.name = r.line()[:80].rstrip()
    r.skip(); m.description = r.line()[:80].rstrip()
    r.skip(); d = r.line()
    m.date = _dt.date(int(d[0:4]), int(d[5:7]), int(d[8:10]))
    r.skip(); m.filename = r.line()[:80].rstrip()
    r.skip(); fl = r.line()[:40].ljust(40, "0")
    m.flags = "".join("1" if c == "1" or (i == 0 and c == "3") else "0" for i, c in enumerate(fl))
    r.skip()
    npiles, m.elements, m.increments = (int(v) for v in r.numbers(3))
    r.skip(2)
    for _ in range(npiles):
        name = r.line()[:80].rstrip()
        v = r.numbers(19)
        un = [v[15 + j] * 1.0 if v[15 + j] > 0 else None for j in range(4)]
        m.piles.append(Pile(name=name, length=v[1], shaft_diameter=v[2], internal_diameter=v[3],
                            base_diameter=v[4], rake_x=v[5], rake_y=v[6], x=v[7], y=v[8], z=v[9],
                            ea=v[10], eix=v[11], eiy=v[12], gj=v[13], reinforced_length=v[14],
                            unreinforced_ea=un[0], unreinforced_eix=un[1],
                            unreinforced_eiy=un[2], unreinforced_gj=un[3]))
    r.skip(); m.interaction = int(r.numbers(1)[0])
    if m.interaction == 3:
        r.skip(); m.interaction_distance = r.numbers(1)[0]
    r.skip(); m.depth_to_rigid_layer = r.numbers(1)[0]
    nonlinear = m.increments > 1
    if nonlinear:
        r.skip(); ov, unl = r.numbers(2)
        m.overburden, m.elastic_unloading = ov, int(unl) == 1
    r.skip(); nlayers, avg = r.numbers(2)
    m.layer_averaging = int(avg)
    r.skip(2)
    for _ in range(int(nlayers)):
        name = r.line()[:80].rstrip()
        depth, ev, dev, eh, deh, nu = r.numbers(6)
        m.layers.append(Layer(name=name, depth=depth, ev=ev, dev=dev, eh=eh, deh=deh, poisson=nu))
    if nonlinear:
        r.skip(5)
        for l in m.layers:
            l.ground_name = r.line()[:80].rstrip()
            v = r.numbers(10)
            l.ground_type, l.weight_density = int(v[0]), v[1]
            l.max_skin_friction, l.max_bearing_pressure = v[2], v[3]
            a, b, c = v[4:7]
            if l.ground_type == 1:
                l.phi, l.delta, l.ks = a, b, c
            elif l.ground_type == 2:
                l.cu, l.dcu, l.alpha = a, b, c
            elif l.ground_type == 3:
                l.qu, l.k = a, (b, c, v[7], v[8], v[9])
            elif l.ground_type == 4:
                l.direct_skin_friction, l.direct_end_bearing, l.direct_lateral = a, b, max(c, 0.0)
        r.skip(); nqflag = int(r.numbers(1)[0])
        m.auto_nq = nqflag == 1
        if not m.auto_nq:
            m.nq = r.numbers(1)[0]
        r.skip(); m.limiting_shaft_friction, m.limiting_bearing_pressure = r.numbers(2)
        r.skip(); m.rs, m.rb, m.rl, m.rt = r.numbers(4)
    r.skip(); m.free_standing_length = r.numbers(1)[0]
    r.skip(); m.loads = Loads(*r.numbers(8))
    return m


__all__ = ["Model", "Pile", "Layer", "Loads", "QuellonError", "DEFAULT_FLAGS", "parse_model_text"]
