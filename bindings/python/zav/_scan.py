"""Runs a scan in a thread of its own, so that a signal or a time limit can end it."""

from __future__ import annotations

import contextvars
import os
import signal
import threading
from concurrent.futures import Future
from concurrent.futures import TimeoutError as FutureTimeout
from typing import Callable, Optional, TypeVar

from .errors import ScanTimeout

Found = TypeVar("Found")

# How long a scanner has between the polite signal and the other one.
_GRACE = 2.0
_ROUND = 0.05


def run(scan: Callable[[], Found], timeout: Optional[float]) -> Found:
    """What `scan` returns or raises.

    After `timeout` seconds, or when a signal handler of this thread raises (as Ctrl-C does), the scanner is ended, `scan` returns,
    and the exception is raised.
    """
    outcome: Future[Found] = Future()
    context = contextvars.copy_context()

    def body() -> None:
        try:
            outcome.set_result(context.run(scan))
        except BaseException as error:  # pylint: disable=broad-except
            outcome.set_exception(error)

    thread = threading.Thread(target=body, name="zav-scan")
    thread.start()
    try:
        try:
            return outcome.result(timeout)
        except FutureTimeout:
            if outcome.done():
                raise
        _end(thread, outcome)
        raise ScanTimeout(f"the scan was ended because it took longer than {timeout} seconds")
    except BaseException:
        if not outcome.done():
            _end(thread, outcome)
        raise
    finally:
        if outcome.done():
            thread.join()


def _end(thread: threading.Thread, outcome: Future[Found]) -> None:
    """Signals the scanner of the thread until the scan has returned."""
    rounds = 0
    while not outcome.done():
        number = signal.SIGTERM if rounds * _ROUND < _GRACE else signal.SIGKILL
        for scanner in _scanners(thread.native_id):
            try:
                os.kill(scanner, number)
            except OSError:
                pass
        try:
            outcome.exception(_ROUND)
        except FutureTimeout:
            pass
        rounds += 1


def _scanners(thread: Optional[int]) -> list[int]:
    """The processes that the library started for this thread.

    The thread's child is the library's own, which waits for the scanner; the scanner and its children are below it.
    """
    found: list[int] = []
    for keeper in _children(os.getpid(), thread):
        found += _children(keeper, keeper)
    for process in found:
        found += _children(process, process)
    return found


def _children(process: int, thread: Optional[int]) -> list[int]:
    try:
        with open(f"/proc/{process}/task/{thread}/children", encoding="ascii") as children:
            return [int(child) for child in children.read().split()]
    except OSError:
        return []
