"""The engine's one model, its callbacks and its files, used one call at a time.

The library holds exactly one model and one set of callbacks per process, and a run
consumes the model. So every use of the engine here (check a file, write a TMK, run)
takes one module-wide lock, starts from an empty engine model and leaves it empty: the
engine has no export that clears a model, and a run is what resets it, so a model that
is not run is discarded by a run that the engine refuses at once (a not-a-number depth
of the rigid layer).

The package's message and stiffness callbacks are registered at the start of every
use (so a function that a caller registered through `quellon.capi()` is replaced then)
and stay registered; their ctypes objects live at module level for the life of the
process, so the engine never calls a function that Python has freed. They write into
the record of the call in progress.
"""
from __future__ import annotations

import contextlib
import ctypes
import math
import os
import sys
import tempfile
import threading
from pathlib import Path

import numpy as np

from . import _capi
from .model import Model, QuellonError, parse_model_text

_lock = threading.RLock()


class _Record:
    """What the callbacks of one call deliver."""

    def __init__(self) -> None:
        self.messages: list[tuple[int, str]] = []
        self.grmat: list[np.ndarray] = []

    def errors(self) -> list[str]:
        return [t for s, t in self.messages if s >= 2]


_record = _Record()


def _on_message(severity, text):
    _record.messages.append((severity[0], text.decode("latin-1") if text else ""))


def _on_stiffness(grmat):
    # Column order: element (a, b) at a + 6(b - 1); rows and columns X, Y, Z, about X, Y, Z.
    _record.grmat.append(np.ctypeslib.as_array(grmat, shape=(36,)).astype(np.float64).reshape(6, 6, order="F"))


_callbacks = {
    "QuellonSetProjectMessageCallback": _capi.MessageFn(_on_message),
    "QuellonSetStiffnessMatrixCallback": _capi.StiffnessMatrixFn(_on_stiffness),
}


def engine() -> ctypes.CDLL:
    """The library with this package's callbacks registered. Call with the lock held."""
    lib = _capi.library()
    for name, fn in _callbacks.items():
        getattr(lib, name)(fn)
    return lib


@contextlib.contextmanager
def session():
    """One use of the engine: the lock, a fresh record and a temporary directory."""
    global _record
    with _lock:
        _record = _Record()
        with tempfile.TemporaryDirectory(prefix="quellon-") as tmp:
            yield engine(), _record, Path(tmp)


@contextlib.contextmanager
def quiet_stdout(enabled: bool = True):
    """Sends what the engine prints to standard output (its "Increment" lines) away."""
    if not enabled:
        yield
        return
    libc = ctypes.CDLL(None)
    sys.stdout.flush()
    libc.fflush(None)
    saved = os.dup(1)
    try:
        with open(os.devnull, "wb") as null:
            os.dup2(null.fileno(), 1)
        yield
    finally:
        libc.fflush(None)
        os.dup2(saved, 1)
        os.close(saved)


def discard(lib, tmp: Path) -> None:
    """Empties the engine's model by a run that it refuses before any work."""
    clear_cases = getattr(lib, "QuellonClearLoadCases", None)  # absent from older libraries
    if clear_cases is not None:
        clear_cases()
    lib.QuellonSetBoreholeDepthToRigidLayer(math.nan)
    lib.QuellonRunAnalysis1(os.fsencode(tmp / "discarded.xml"))
    lib.QuellonCloseAllFiles()


def _reader_problems(log: Path) -> list[str]:
    """The reader's complaints in a LOG, as the command-line host picks them out."""
    out, reading = [], False
    if not log.exists():
        return out
    for line in log.read_bytes().decode("latin-1").splitlines():
        if line.startswith("Reading data from TMW file: "):
            reading = True
        if reading and (line.startswith(("Error", "Input error", "[Error] ")) or "Error reading" in line):
            out.append(line[8:] if line.startswith("[Error] ") else line)
    return out


def load_file(lib, record: _Record, tmp: Path, path: Path) -> None:
    """Has the engine read a text model file into its model; raises `QuellonError` with
    the reader's messages if it refuses the file (the model is then discarded)."""
    if not path.is_file():
        raise QuellonError(f"no model file {path}")
    log = tmp / "read.log"
    lib.QuellonCreateLOGFile(os.fsencode(log))
    with quiet_stdout():
        ok = lib.READTMWFILEDIRECT(_capi.padded260(path.resolve()))
    line = lib.QuellonGetTMWLineNumber()
    lib.QuellonCloseTMWFile()
    lib.QuellonCloseLOGFile()
    if ok != 1:
        problems = _reader_problems(log) or record.errors() or ["the engine refused the model"]
        discard(lib, tmp)
        raise QuellonError(f"{path}:{line}: " + "; ".join(problems), problems, line)


def check_file(path: Path) -> None:
    """Has the engine's reader check a text model file, leaving the engine empty."""
    with session() as (lib, record, tmp):
        load_file(lib, record, tmp, path)
        discard(lib, tmp)


def send(lib, record: _Record, tmp: Path, model: Model) -> None:
    """Sends a model through the setters; a refused setter raises `QuellonError` with the
    engine's own message, and the half-sent model is discarded."""
    try:
        model.send(lib)
    except QuellonError as e:
        errors = record.errors()
        discard(lib, tmp)
        if errors:
            raise QuellonError(f"{e}: " + "; ".join(errors), errors) from e
        raise


def write_tmk(model: Model, path: Path) -> None:
    with session() as (lib, record, tmp):
        send(lib, record, tmp, model)
        ok = lib.QuellonCreateTMKFile(os.fsencode(path))
        lib.QuellonCloseTMKFile()
        discard(lib, tmp)
        if ok != 1:
            raise QuellonError(f"cannot write {path}: " + "; ".join(record.errors()), record.errors())


def file_flags(path: Path) -> str:
    return parse_model_text(path.read_bytes().decode("latin-1")).flags
