import numpy as np
import pytest

import quellon
from conftest import EXAMPLES
from quellon import Layer, Loads, Model, Pile, QuellonError


def group_3x3(**loads):
    """The 3 by 3 example, built field by field."""
    piles = [Pile(name=f"G{3 * j + i + 1}", x=3.0 * (i - 1), y=3.0 * (j - 1), length=15, shaft_diameter=0.6,
                  ea=8482, eix=191, eiy=191, gj=159) for j in range(3) for i in range(3)]
    layers = [Layer(name="Dense sand", depth=0, ev=30000, dev=3000, eh=25000, deh=2500, poisson=0.3),
              Layer(name="Sandy gravel", depth=10, ev=90000, eh=80000, poisson=0.25)]
    return Model(piles=piles, layers=layers, elements=15, interaction=2,
                 loads=Loads(**(loads or dict(fx=600, fz=9000, my=1500))))


def same_results(a, b):
    assert np.array_equal(a.grmat, b.grmat)
    assert a.cap.equals(b.cap)


def test_a_model_built_in_python_equals_the_file_read_by_the_engine(run_example):
    model = group_3x3()
    model.piles[0].name = "G1 <cap> & ]]> \xb0"          # markup in a name: the XML holds it in CDATA
    r = quellon.run(model)
    same_results(r, run_example("group_3x3_combined"))
    assert r.piles.name[0] == r.heads.name[0] == model.piles[0].name


@pytest.mark.parametrize("name", ["group_3x3_combined", "nonlinear_layered_failure", "raked_group_torque",
                                  "single_bored_pile_clay"])
def test_read_and_written_models_run_as_the_file(name, run_example, tmp_path):
    model = Model.read(EXAMPLES / f"{name}.tmw")
    same_results(quellon.run(model), run_example(name))
    model.write(tmp_path / "m.tmk")
    same_results(quellon.run(tmp_path / "m.tmk"), run_example(name))


def broken_pile():
    m = group_3x3()
    m.piles[3].length = -1.0
    return m


def direct_ground():
    m = group_3x3()
    m.increments = 2
    for layer in m.layers:
        layer.ground_type, layer.weight_density = 4, 18.0
    return m


def no_ground():
    m = group_3x3()
    m.layers = []
    return m


@pytest.mark.parametrize("make, expect", [
    (broken_pile, "pile 4"),
    (no_ground, "no layers"),
    (direct_ground, "no setter"),
])
def test_refused_models_raise_the_engines_message_and_leave_the_engine_empty(make, expect, run_example):
    with pytest.raises(QuellonError, match=expect):
        quellon.run(make())
    same_results(quellon.run(group_3x3()), run_example("group_3x3_combined"))


def test_a_broken_file_names_the_readers_problem_and_line(tmp_path, run_example):
    lines = (EXAMPLES / "group_3x3_combined.tmw").read_bytes().split(b"\r\n")
    lines[17] = b"1 -15. 0.6 0. 0.6 0. 0. -3. -3. 0. 8482. 191. 191. 159. 0 0 0 0 0"   # pile 1 length
    bad = tmp_path / "bad.tmw"
    bad.write_bytes(b"\r\n".join(lines))
    with pytest.raises(QuellonError) as e:
        Model.read(bad)
    assert e.value.line == 18 and "pile" in str(e.value).lower()
    same_results(quellon.run(group_3x3()), run_example("group_3x3_combined"))
