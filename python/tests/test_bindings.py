import ctypes
import re

import pytest

from conftest import REPO
from quellon import _capi


def header_exports():
    text = (REPO / "include" / "quellon.h").read_text()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    found = {}
    for m in re.finditer(r"QUELLON_API\s+[\w\s\*]+?\b(\w+)\s*\(([^)]*)\)\s*;", text):
        params = m.group(2).strip()
        found[m.group(1)] = 0 if params in ("", "void") else params.count(",") + 1
    return found


def test_every_export_of_the_header_is_bound_with_its_arity():
    header = header_exports()
    assert len(header) > 70
    assert sorted(set(header) - set(_capi.EXPORTS)) == [], "exports without a binding"
    assert sorted(set(_capi.EXPORTS) - set(header)) == [], "bindings of no export"
    wrong = {n: (k, len(_capi.EXPORTS[n][1])) for n, k in header.items() if len(_capi.EXPORTS[n][1]) != k}
    assert wrong == {}
    lib = _capi.library()
    assert lib.QuellonGetVersion() == 803


def test_direct_entries_take_plain_paths_and_leave_the_package_working(tmp_path, run_example):
    import numpy as np

    import quellon
    from conftest import EXAMPLES
    lib = _capi.library()
    assert lib.READTMWFILEDIRECT(EXAMPLES / "single_bored_pile_clay.tmw") == 1
    assert lib.QuellonGetBoreholeNumberOfLayers() > 0
    assert lib.RUNANALYSISDIRECT(str(tmp_path / "raw.xml"), None, None) == 1
    lib.QuellonCloseAllFiles()
    assert lib.QuellonGetBoreholeNumberOfLayers() == 0       # a run consumes the model
    raw = quellon.read_xml(tmp_path / "raw.xml")
    assert np.array_equal(raw.cap.uz_mm, run_example("single_bored_pile_clay").cap.uz_mm)
    # What a padded field cannot carry whole is refused rather than cut.
    for bad in ("x" * 261, "/tmp/ends in blank "):
        with pytest.raises(ctypes.ArgumentError, match="ValueError"):
            lib.READTMWFILEDIRECT(bad)
