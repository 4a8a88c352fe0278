import os
import subprocess
import sys

import pytest

from conftest import EXAMPLES


@pytest.mark.skipif(not os.environ.get("QUELLON_BUILD_DIR"), reason="needs the build tree (run through ctest)")
def test_the_installed_package_finds_the_installed_library(tmp_path):
    prefix = tmp_path / "prefix"
    subprocess.run(["cmake", "--install", os.environ["QUELLON_BUILD_DIR"], "--prefix", str(prefix)],
                   check=True, capture_output=True)
    env = {k: v for k, v in os.environ.items() if k not in ("QUELLON_LIBRARY", "PYTHONPATH")}
    env["PYTHONPATH"] = str(prefix / "lib" / "python3" / "dist-packages")
    code = ("import quellon; r = quellon.run(%r); "
            "print(quellon.find_library()); print(r.cap.uz_mm.iloc[-1])" % str(EXAMPLES / "single_bored_pile_clay.tmw"))
    out = subprocess.run([sys.executable, "-c", code], env=env, cwd=tmp_path, check=True,
                         capture_output=True, text=True).stdout.split()
    assert out[0].startswith(str(prefix)) and float(out[1]) > 0
