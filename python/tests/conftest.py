import sys
from pathlib import Path

import matplotlib
import pytest

matplotlib.use("Agg")
PYTHON_DIR = Path(__file__).resolve().parents[1]
REPO = PYTHON_DIR.parent
EXAMPLES = REPO / "examples"
sys.path.insert(0, str(PYTHON_DIR))

import quellon  # noqa: E402

_runs: dict = {}


@pytest.fixture(scope="session")
def run_example():
    """Runs an example file once per session (the engine reads it itself)."""
    def get(name):
        if name not in _runs:
            _runs[name] = quellon.run(EXAMPLES / f"{name}.tmw")
        return _runs[name]
    return get
