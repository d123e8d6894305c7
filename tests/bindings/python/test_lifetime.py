"""The ends of libraries, scans and processes."""

import logging
import os
import pathlib
import signal
import subprocess
import sys
import threading
import time

import pytest

import zav

# Tells its process number and waits. "$1" is what it does with the signal TERM.
WAITING = 'trap "{}" TERM; echo $$ >"{}/scanner.new"; mv "{}/scanner.new" "{}/scanner"; while :; do sleep 0.1; done'


def waits(toolkit, at_term="exit 1"):
    here = toolkit.path
    toolkit.script("quorvah", WAITING.format(at_term, here, here, here))


def scanner_of(toolkit) -> int:
    file: pathlib.Path = toolkit.path / "scanner"
    deadline = time.monotonic() + 30
    while not file.exists():
        assert time.monotonic() < deadline, "the scanner has not started"
        time.sleep(0.01)
    return int(file.read_text())


def has_ended(process: int) -> bool:
    try:
        state = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
    except FileNotFoundError:
        return True
    return state == "Z"


def test_closed_library_is_refused(toolkit):
    toolkit.hardware_is("")
    with toolkit.library() as library:
        kept = library.hardware(["Processor"])
    for use in (lambda: library.hardware(["Processor"]), lambda: library.software("<Signature/>")):
        with pytest.raises(ValueError, match="closed"):
            use()
    library.close()
    assert kept.groups["Processor"] == []


def test_missing_shared_library_is_told_with_advice(monkeypatch):
    with pytest.raises(OSError, match="libzav1"):
        zav.Library("tests", library="/nowhere/libzav.so.1")
    monkeypatch.setenv("ZAV_LIBRARY", "/elsewhere/libzav.so.1")
    with pytest.raises(OSError, match="/elsewhere"):
        zav.Library("tests")


def test_missing_temporary_directory_is_an_error(toolkit):
    with pytest.raises(zav.Error) as failure:
        zav.Library("tests", temp_directory="/nowhere").hardware(["Processor"])
    assert failure.value.code == zav.Code.WORKSPACE


def test_threads_scan_at_the_same_time(toolkit):
    toolkit.hardware_is("<Processor><Name>one</Name></Processor>")
    library = toolkit.library()
    found = []

    def scan():
        found.append(library.hardware(["Processor"]).groups["Processor"][0]["Name"])

    threads = [threading.Thread(target=scan) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == ["one"] * 8


def test_child_that_was_forked_scans_too(toolkit):
    toolkit.hardware_is("<Processor><Name>one</Name></Processor>")
    library = toolkit.library()
    library.hardware(["Processor"])
    child = os.fork()
    if child == 0:
        os._exit(0 if library.hardware(["Processor"]).groups["Processor"] else 1)
    assert os.waitpid(child, 0)[1] == 0
    assert library.hardware(["Processor"]).groups["Processor"]


@pytest.mark.parametrize("at_term", ["exit 1", ""], ids=["polite scanner", "scanner that ignores the signal"])
def test_scan_ends_at_the_time_limit(toolkit, at_term):
    waits(toolkit, at_term)
    with pytest.raises(zav.ScanTimeout, match="3 seconds"):
        toolkit.library().hardware(["Processor"], timeout=3)
    assert has_ended(scanner_of(toolkit))
    assert threading.active_count() == 1


def test_fast_scan_keeps_within_the_time_limit(toolkit):
    toolkit.hardware_is("<Processor/>")
    library = zav.Library("tests", toolkit=toolkit.path, temp_directory=toolkit.temp, timeout=60)
    assert len(library.hardware(["Processor"]).groups["Processor"]) == 1


def test_interrupt_ends_the_scan(toolkit):
    waits(toolkit)
    program = (
        "import sys, zav\n"
        "try:\n    zav.Library('tests', toolkit=sys.argv[1], temp_directory=sys.argv[2]).hardware(['Processor'])\n"
        "except KeyboardInterrupt:\n    print('interrupted')\n"
    )
    host = subprocess.Popen([sys.executable, "-c", program, toolkit.path, toolkit.temp], stdout=subprocess.PIPE, text=True)
    scanner = scanner_of(toolkit)
    # Only the host gets the signal, not the scanner.
    host.send_signal(signal.SIGINT)
    output, _ = host.communicate(timeout=30)
    assert output == "interrupted\n"
    assert has_ended(scanner)


def test_exception_of_a_logging_handler_does_not_stop_the_scan(toolkit):
    toolkit.hardware_is("<Processor/>")

    class Broken(logging.Handler):
        def emit(self, record):
            raise RuntimeError("handler")

    logger = logging.getLogger("zav")
    handler = Broken()
    logger.addHandler(handler)
    raise_exceptions, logging.raiseExceptions = logging.raiseExceptions, False
    hook, sys.unraisablehook = sys.unraisablehook, lambda _: None
    try:
        assert len(toolkit.library().hardware(["Processor"]).groups["Processor"]) == 1
    finally:
        logger.removeHandler(handler)
        logging.raiseExceptions = raise_exceptions
        sys.unraisablehook = hook
