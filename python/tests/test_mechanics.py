import pytest

import quellon
from conftest import EXAMPLES


def test_corrected_mechanics_is_chosen_per_run_and_the_default_stays_the_method(run_example):
    model = EXAMPLES / "raked_group_torque.tmw"
    corrected = quellon.run(model, mechanics="corrected")
    assert corrected.mechanics == "corrected"
    # The engine keeps a chosen mode across runs; the package sets it on every run.
    default = quellon.run(model)
    assert default.mechanics == "as-defined"
    assert default.cap.rz_mrad.equals(run_example("raked_group_torque").cap.rz_mrad)
    assert not corrected.cap.rz_mrad.equals(default.cap.rz_mrad)
    with pytest.raises(ValueError):
        quellon.run(model, mechanics="exact")
