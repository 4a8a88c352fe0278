"""ctypes bindings of every export of quellon.h, grouped as the header groups them.

The engine is one C library with plain C functions; nothing here is generated or
compiled. Each export is one row of a table: name, result type, argument types. To bind
a new export, add its row under its group.

Types: reals cross as C doubles (the engine stores 32-bit floats), integers as int,
the header's quellon_bool as one signed byte, texts as NUL-terminated characters (`Text`
takes str, bytes or a path) with a count of characters where the header has one. The
four entries that end in DIRECT take fixed 260-character texts padded with blanks:
`Path260` pads a plain path on the way in, so `lib.READTMWFILEDIRECT("model.tmw")`
works as it stands.
"""
from __future__ import annotations

import ctypes
import os
import sys
from ctypes import (CFUNCTYPE, POINTER, c_char_p, c_double, c_float, c_int, c_long,
                    c_void_p, c_byte)
from pathlib import Path

quellon_bool = c_byte
PATH_FIELD = 260  # characters of a path of the DIRECT entries


class Text(c_char_p):
    """A NUL-terminated text argument: bytes as they are, str in Latin-1 (the engine's code
    page), a path object as the file system spells it, None as a null pointer."""

    @classmethod
    def from_param(cls, value):
        if isinstance(value, str):
            value = value.encode("latin-1", errors="replace")
        elif isinstance(value, os.PathLike):
            value = os.fsencode(value)
        return c_char_p.from_param(value)


class Path260(c_char_p):
    """A path of the DIRECT entries: blank-padded to 260 characters here, so that a caller
    passes a plain path (str, bytes or path object) or None for a null pointer."""

    @classmethod
    def from_param(cls, value):
        if value is None:
            return None
        if isinstance(value, bytes) and len(value) > PATH_FIELD:
            return c_char_p.from_param(value)       # already padded
        return c_char_p.from_param(padded260(os.fsdecode(value) if isinstance(value, bytes) else value))


_text = Text
_path260 = Path260
_int_p = POINTER(c_int)
_float_p = POINTER(c_float)

# ---- Host callbacks. Every numeric argument arrives by reference. --------------------
CounterFn = CFUNCTYPE(None, _int_p)
MessageFn = CFUNCTYPE(None, _int_p, c_char_p)
CreateIncrementFn = CFUNCTYPE(None, _int_p)
PileCapLoadsFn = CFUNCTYPE(None, *([_float_p] * 6))
PileCapDisplacementsFn = CFUNCTYPE(None, *([_float_p] * 6))
ForceDisplacementStiffnessesFn = CFUNCTYPE(None, *([_float_p] * 9))
StiffnessMatrixFn = CFUNCTYPE(None, _float_p)
CentreOfRotationFn = CFUNCTYPE(None, _float_p, _float_p)
WindowMessageFn = CFUNCTYPE(None, c_char_p, c_long, c_long)


class LoadCaseResults(ctypes.Structure):
    """One load case's results as the load case callback receives them (quellon.h)."""
    _fields_ = ([("number", c_int), ("name", c_char_p), ("piles", c_int), ("elements", c_int),
                 ("increments", c_int), ("cap_loads", _float_p), ("cap_displacements", _float_p)]
                + [(f, _float_p) for f in (
                    "head_fx", "head_fy", "head_fz", "head_mx", "head_my", "head_mz",
                    "head_dx", "head_dy", "head_dz", "head_twist",
                    "stress_axial", "stress_x", "stress_y", "stress_torsion",
                    "disp_axial", "disp_x", "disp_y", "twist",
                    "load_axial", "shear_x", "shear_y", "moment_xz", "moment_yz", "torque")])


LoadCaseFn = CFUNCTYPE(None, POINTER(LoadCaseResults))

_D, _I, _B = c_double, c_int, quellon_bool

# name: (result, [arguments]); None as result means void.
EXPORTS: dict[str, tuple] = {
    # Project
    "QuellonSetProjectName": (_I, [_text, _I]),
    "QuellonSetProjectDescription": (_I, [_text, _I]),
    "QuellonSetProjectDate": (_I, [_I, _I, _I]),
    "QuellonSetProjectFlags": (_I, [_int_p, _I]),
    "QuellonSetProjectFilename": (_I, [_text, _I]),
    "QuellonSetProjectElasticUnloadingFlag": (_I, [_B]),
    "QuellonSetProjectHyperbolicFactors": (_I, [_D, _D, _D, _D]),
    "QuellonSetProjectNq": (_I, [_B, _D]),
    "QuellonSetProjectLimitingShaftFriction": (_I, [_D]),
    "QuellonSetProjectLimitingBearingPressure": (_I, [_D]),
    "QuellonSetProjectExcludeTMKComments": (_I, [_B]),
    "QuellonSetNumberOfLoadIncrements": (_I, [_I]),
    "QuellonSetActions": (_I, [_D] * 8),
    # Borehole and ground
    "QuellonSetBoreholeDepthToRigidLayer": (_I, [_D]),
    "QuellonSetBoreholeOverburden": (_I, [_D]),
    "QuellonSetBoreholeNumberOfLayers": (_I, [_I]),
    "QuellonGetBoreholeNumberOfLayers": (_I, []),
    "QuellonSetBoreholeLayerAveraging": (_I, [_I]),
    "QuellonGetBoreholeLayerAveraging": (_I, []),
    "QuellonSetBoreholeLayerDepth": (_I, [_I, _D]),
    "QuellonSetBoreholeLayerName": (_I, [_I, _text, _I]),
    "QuellonSetBoreholeLayerStiffness": (_I, [_I, _D, _D, _D, _D, _D]),
    "QuellonSetGroundName": (_I, [_I, _text, _I]),
    "QuellonSetGroundType": (_I, [_I, _I]),
    "QuellonSetGroundMaximumSkinFriction": (_I, [_I, _D]),
    "QuellonSetGroundMaximumBearingPressure": (_I, [_I, _D]),
    "QuellonSetGroundWeightDensity": (_I, [_I, _D]),
    "QuellonSetSoilAngleOfFriction": (_I, [_I, _D]),
    "QuellonSetSoilEarthPressureCoefficient": (_I, [_I, _D]),
    "QuellonSetSoilDrainedInterfaceParameter": (_I, [_I, _D]),
    "QuellonSetSoilUndrainedShearStrength": (_I, [_I, _D, _D]),
    "QuellonSetSoilUndrainedInterfaceParameter": (_I, [_I, _D]),
    "QuellonSetRockStrength": (_I, [_I, _D]),
    "QuellonSetRockInterfaceParameters": (_I, [_I, _D, _D, _D, _D, _D]),
    # Foundation and piles
    "QuellonSetNumberOfPiles": (_I, [_I]),
    "QuellonSetNumberOfPileElements": (_I, [_I]),
    "QuellonSetPileInteractionFlag": (_I, [ctypes.c_byte]),
    "QuellonSetPileInteractionDistance": (_I, [_D]),
    "QuellonSetPileCoordinates": (_I, [_I, _D, _D, _D]),
    "QuellonSetPileDimensions": (_I, [_I, _D, _D, _D, _D]),
    "QuellonSetPileHeadLoads": (_I, [_I, _D, _D, _D, _D, _D, _D]),
    "QuellonSetPileName": (_I, [_I, _text, _I]),
    "QuellonSetPileRake": (_I, [_I, _D, _D]),
    "QuellonSetPileReinforcedSectionProperties": (_I, [_I, _D, _D, _D, _D, _D]),
    "QuellonSetPileUnreinforcedSectionProperties": (_I, [_I, _D, _D, _D, _D]),
    "QuellonSetPileCapStiffness": (_I, [_I]),
    "QuellonSetPileFreeStandingLength": (_I, [_D]),
    # Others
    "QuellonGetVersion": (_I, []),
    "QuellonTest": (None, []),
    # Callbacks
    "QuellonSetProjectCounterCallback": (_I, [CounterFn]),
    "QuellonSetProjectMessageCallback": (_I, [MessageFn]),
    "QuellonSetCreateIncrementCallback": (_I, [CreateIncrementFn]),
    "QuellonSetPileCapLoadsCallback": (_I, [PileCapLoadsFn]),
    "QuellonSetPileCapDisplacementsCallback": (_I, [PileCapDisplacementsFn]),
    "QuellonSetForceDisplacementStiffnessesCallback": (_I, [ForceDisplacementStiffnessesFn]),
    "QuellonSetStiffnessMatrixCallback": (_I, [StiffnessMatrixFn]),
    "QuellonSetPileCapCentreOfRotationCallback": (_I, [CentreOfRotationFn]),
    "QuellonCloseAllCallbacks": (_I, []),
    "QuellonSetWindowMessageObserver": (_I, [WindowMessageFn]),
    # Run
    "QuellonRunAnalysis1": (_I, [_text]),
    "QuellonRunAnalysis2": (_I, [_text, _text]),
    "RUNANALYSISDIRECT": (_I, [_path260, _path260, c_void_p]),
    # Load cases
    "QuellonAddLoadCase": (_I, [_text, _I] + [_D] * 8),
    "QuellonClearLoadCases": (_I, []),
    "QuellonGetNumberOfLoadCases": (_I, []),
    "QuellonSetLoadCaseXMLFile": (_I, [_text]),
    "QuellonSetLoadCaseCallback": (_I, [LoadCaseFn]),
    # Files
    "QuellonCreateLOGFile": (_I, [_text]),
    "CREATELOGFILEDIRECT": (_I, [_path260]),
    "QuellonCloseLOGFile": (None, []),
    "QuellonCreateTMKFile": (_I, [_text]),
    "WRITETMKFILEDIRECT": (_I, [_path260]),
    "READTMWFILEDIRECT": (_I, [_path260]),
    "QuellonGetTMWLineNumber": (_I, []),
    "QuellonCloseTMWFile": (None, []),
    "QuellonCloseTMKFile": (None, []),
    # Model review: the pre-run check and the findings of the last read and check
    "QuellonCheckModel": (_I, []),
    "QuellonGetDiagnostic": (_I, [c_int, c_char_p, c_int]),
    # Mechanics: the method as defined (0) or corrected (1); kept across runs
    "QuellonSetMechanics": (_I, [c_int]),
    "QuellonGetMechanics": (_I, []),
    "QuellonCloseTXTFile": (None, []),
    "QuellonCloseAllFiles": (None, []),
}

class LibraryNotFound(OSError):
    """The engine library could not be found or loaded."""


def padded260(path: str | os.PathLike) -> bytes:
    """A path as the DIRECT entries take it: 260 characters, blank-padded, in Latin-1.

    A longer path cannot be passed whole; it is refused rather than cut.
    """
    raw = os.fsencode(os.fspath(path))
    if len(raw) > PATH_FIELD:
        raise ValueError(f"path longer than {PATH_FIELD} characters: {os.fspath(path)}")
    if raw.endswith(b" "):
        raise ValueError("a path that ends in a blank cannot pass through a blank-padded field")
    return raw.ljust(PATH_FIELD, b" ") + b"\0"


def _candidates() -> list[Path]:
    """Where the library may be, in the order they are tried."""
    found: list[Path] = []
    here = Path(__file__).resolve().parent
    # Installed: the library directory relative to this package, written at install time.
    try:
        from . import _installed  # type: ignore[attr-defined]
        found.append((here / _installed.LIBRARY_DIR / _installed.LIBRARY_NAME).resolve())
    except ImportError:
        pass
    # Build tree: python/quellon lies two levels below the repository.
    repo = here.parent.parent
    for build in sorted(repo.glob("build*")):
        for name in ("libquellon.so", "libquellon.dylib", "quellon.dll"):
            if (build / name).exists():
                found.append(build / name)
    return found


def find_library() -> Path:
    """The engine library: $QUELLON_LIBRARY, else the installed layout next to this
    package, else a build directory (build*/) of the repository that holds the package."""
    env = os.environ.get("QUELLON_LIBRARY")
    if env:
        p = Path(env)
        if not p.is_file():
            raise LibraryNotFound(f"QUELLON_LIBRARY={env} is not a file")
        return p
    for p in _candidates():
        if p.is_file():
            return p
    raise LibraryNotFound(
        "the QuellonEngine library (libquellon) was not found: set QUELLON_LIBRARY to its "
        "path, install the project with cmake --install, or build it into build/ of the "
        "repository (cmake -S . -B build && cmake --build build)")


def bind(lib: ctypes.CDLL) -> ctypes.CDLL:
    """Gives every export of the table its result and argument types."""
    for name, (restype, argtypes) in EXPORTS.items():
        fn = getattr(lib, name)
        fn.restype = restype
        fn.argtypes = argtypes
    return lib


_lib: ctypes.CDLL | None = None


def library() -> ctypes.CDLL:
    """The loaded and bound engine library, loaded once per process."""
    global _lib
    if _lib is None:
        path = find_library()
        try:
            _lib = bind(ctypes.CDLL(str(path)))
        except OSError as e:
            raise LibraryNotFound(f"cannot load {path}: {e}") from e
        except AttributeError as e:
            raise LibraryNotFound(f"{path} lacks an export of quellon.h: {e}") from e
    return _lib


def latin1(text: str) -> bytes:
    return text.encode("latin-1", errors="replace")


if __name__ == "__main__":  # pragma: no cover - a quick look at what was loaded
    print(find_library(), library().QuellonGetVersion(), file=sys.stdout)
