"""QuellonEngine from Python: models, runs, results as DataFrames, and plots.

    import quellon
    m = quellon.Model.read("examples/group_3x3_combined.tmw")
    r = quellon.run(m)
    r.cap, r.heads, r.profile(1)
    quellon.plots.profiles(r, piles=[1, 5])

The engine is the C library libquellon, reached through ctypes (`quellon.capi()` gives
the bound library itself). It is found through $QUELLON_LIBRARY, else next to an
installed package, else in build*/ of the repository that holds this package.
Axes: X, Y horizontal, Z positive downward. Units: m, kN, kNm, kPa; see the docstrings.
"""
from ._capi import LibraryNotFound, find_library, padded260
from ._capi import library as capi
from .model import DEFAULT_FLAGS, Layer, Loads, Model, Pile, QuellonError
from .results import Results, read_xml, run
from .load_cases import LoadCase, read_load_cases
from . import plots  # noqa: E402  (after the results it draws)

__all__ = ["Model", "Pile", "Layer", "Loads", "QuellonError", "Results", "run", "read_xml",
           "capi", "find_library", "padded260", "LibraryNotFound", "DEFAULT_FLAGS", "plots",
           "LoadCase", "read_load_cases"]

