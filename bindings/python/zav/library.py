"""The library: opens a handle for each scan and copies what was found."""

from __future__ import annotations

import ctypes
import difflib
import logging
import os
from types import TracebackType
from typing import Callable, Iterable, Optional, TypeVar, Union

from . import _native, _scan
from ._native import Functions, StrPath
from .codes import Code
from .errors import Error
from .inventory import Hardware, Result, Software

_LOGGERS = {1: "zav.library", 3: "zav.hardware", 4: "zav.software"}
_LEVELS = (logging.WARNING, logging.INFO, logging.DEBUG)
_LAST_GROUP = 51

Found = TypeVar("Found")
#: A preset variable: (guid of the signature, name, value).
Variable = tuple[str, str, str]
#: A setting of the scanner: (plug-in, attribute, value).
Setting = tuple[str, str, str]


class Library:
    """The inventory library, opened for a product.

    Each scan has a handle of its own inside the shared library. Any thread may therefore call any method at any time.
    """

    def __init__(
        self,
        name: str,
        *,
        toolkit: Optional[StrPath] = None,
        temp_directory: Optional[StrPath] = None,
        library: Optional[StrPath] = None,
        timeout: Optional[float] = None,
    ) -> None:
        """
        name            the calling product's name.
        toolkit         directory of the scanners; default: the one that /etc/zav/zav.ini names for the product.
        temp_directory  default: the one that TEMP or TMP names, else /tmp.
        library         the shared library; default: the one that the environment variable ZAV_LIBRARY names, else libzav.so.1.
        timeout         seconds that a scan may take; default: no limit.

        Raises OSError if the shared library cannot be loaded.
        """
        self._name = _native.wide_text(name).encode("latin-1")
        self._toolkit = None if toolkit is None else _native.wide_path(toolkit)
        self._temp_directory = None if temp_directory is None else _native.wide_path(temp_directory)
        self._timeout = timeout
        self._functions = Functions(library)
        self._opened = False
        self._closed = False

    def hardware(
        self, groups: Optional[Iterable[Union[str, int]]] = None, *, timeout: Optional[float] = None
    ) -> Hardware:
        """Scans these groups, by names or numbers; without an argument, all groups.

        Raises Error, ScanTimeout, or ValueError if the library is closed. A scan that is interrupted by an exception of a signal
        handler, such as KeyboardInterrupt, is ended.
        """
        if isinstance(groups, str):
            raise TypeError(f'groups is a list of names: ["{groups}"]')
        wanted = None if groups is None else list(groups)
        return self._run(lambda scan: scan.hardware(wanted), timeout)

    def software(
        self,
        signatures: Union[str, Iterable[str]],
        *,
        variables: Iterable[Variable] = (),
        settings: Iterable[Setting] = (),
        timeout: Optional[float] = None,
    ) -> Software:
        """Evaluates a signature, or several in one run of the scanner, given as XML texts. Raises what `hardware` raises.

        variables  presets: (guid of the signature, name, value).
        settings   of the scanner: ("Secrets", "allow", "/root").
        """
        texts = [_native.wide_text(text) for text in ([signatures] if isinstance(signatures, str) else signatures)]
        array = (ctypes.c_wchar_p * (len(texts) + 1))(*texts, None)
        options = _Options(variables, settings)
        return self._run(lambda scan: scan.software(options, "sw_evaluate_multi", array, len(texts)), timeout)

    def software_file(
        self,
        path: StrPath,
        *,
        variables: Iterable[Variable] = (),
        settings: Iterable[Setting] = (),
        timeout: Optional[float] = None,
    ) -> Software:
        """Evaluates the signatures of a file. The rest is as for `software`."""
        # The library does not say why a file cannot be read.
        os.close(os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC))
        file = _native.wide_path(os.path.abspath(path))
        options = _Options(variables, settings)
        return self._run(lambda scan: scan.software(options, "sw_evaluate_file", file), timeout)

    def close(self) -> None:
        """Ends the use of the library. Scans that run in other threads go on."""
        self._closed = True

    def __enter__(self) -> Library:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def _run(self, work: Callable[[_Scan], Found], timeout: Optional[float]) -> Found:
        if self._closed:
            raise ValueError("the library is closed")

        def scan() -> Found:
            # What the first scan has said about the installation need not be said again.
            with _Scan(self._functions, quiet=self._opened) as opened:
                opened.open(self._name, self._temp_directory, self._toolkit)
                self._opened = True
                return work(opened)

        return _scan.run(scan, self._timeout if timeout is None else timeout)


class _Options:
    """Variables and settings as the library takes them."""

    def __init__(self, variables: Iterable[Variable], settings: Iterable[Setting]) -> None:
        escaped = _native.xml_text
        self.variables = [(escaped(name), escaped(value), escaped(guid)) for guid, name, value in variables]
        self.settings = [(escaped(plugin), escaped(name), escaped(value)) for plugin, name, value in settings]


class _Scan:
    """A handle of the shared library for one scan. It is used by one thread and freed at the end."""

    def __init__(self, functions: Functions, *, quiet: bool) -> None:
        self._functions = functions
        self._quiet = quiet
        self._reasons: list[str] = []
        # The library sends a message for each value that is read.
        self._traces = any(logging.getLogger(name).isEnabledFor(logging.DEBUG) for name in _LOGGERS.values())
        # Kept as long as the handle, because the library calls it.
        self._callback = _native.LOG_CALLBACK(self._log)
        self._handle = ctypes.c_void_p()
        self._context = ctypes.c_void_p()
        self._kind = ""

    def open(self, name: bytes, temp_directory: Optional[str], toolkit: Optional[str]) -> None:
        self._call("init", name, self._callback, None, temp_directory, toolkit, ctypes.byref(self._handle))
        self._quiet = False

    def hardware(self, groups: Optional[list[Union[str, int]]]) -> Hardware:
        self._kind = "hw"
        self._call("hw_init", self._handle, self._callback, None, ctypes.byref(self._context))
        names = self._group_names()
        wanted = list(names) if groups is None else [_number(group, names) for group in groups]
        # The scanner tells there how completely it has read the others.
        info = next(number for number, name in names.items() if name == "ScanInfo")
        for number in {*wanted, info}:
            self._call("hw_setopt", self._context, number, 1)
        self._call("hw_run", self._context)
        texts = {number: self._instances(number) for number in {*wanted, info}}
        scan_info = texts[info][0] if texts[info] else {}
        return Hardware({names[number]: texts[number] for number in sorted(set(wanted))}, scan_info)

    def software(self, options: _Options, function: str, *signatures: object) -> Software:
        self._kind = "sw"
        self._call("sw_init", self._handle, self._callback, None, ctypes.byref(self._context))
        for variable in options.variables:
            self._call("sw_setopt_variable", self._context, *variable)
        for setting in options.settings:
            self._call("sw_setopt_config", self._context, *setting)
        self._call(function, self._context, *signatures)
        results = [self._result(result) for result in self._array("sw_get_results")]
        return Software(results, [_native.bytes_at(warning) for warning in self._array("sw_get_warnings")])

    def _group_names(self) -> dict[int, str]:
        names = {}
        name = ctypes.c_void_p()
        for number in range(1, _LAST_GROUP + 1):
            if self._functions.call("hw_get_group_name", self._context, number, ctypes.byref(name)) == 0:
                names[number] = _native.text_at(name.value or 0)
        return names

    def _instances(self, group: int) -> list[dict[str, str]]:
        count = ctypes.c_int()
        self._call("hw_get_group_instances", self._context, group, ctypes.byref(count))
        get_value = self._functions.get("hw_get_value")
        context, address = self._context, ctypes.c_void_p()
        place = ctypes.byref(address)
        # The names of the fields are the same texts in all instances.
        names: dict[int, str] = {}
        instances = []
        for instance in range(count.value):
            texts: dict[str, str] = {}
            for name in self._array("hw_get_fields", group, instance):
                code = get_value(context, group, instance, name, place)
                if code != 0:
                    raise Error(code, tuple(self._reasons))
                if name not in names:
                    names[name] = _native.text_at(name)
                # Of several fields of a name, the library returns the value of the first.
                texts[names[name]] = _native.text_at(address.value or 0)
            instances.append(texts)
        return instances

    def _result(self, result: int) -> Result:
        variables = {}
        for name in self._array("sw_get_variables", result):
            variables[_native.text_at(name)] = _native.text_at(self._address("sw_get_value", result, name))
        return Result(
            _native.text_at(self._address("sw_get_guid", result)),
            variables,
            _native.bytes_at(self._address("sw_get_metadata", result)),
        )

    def _address(self, function: str, *arguments: object) -> int:
        address = ctypes.c_void_p()
        self._call(function, self._context, *arguments, ctypes.byref(address))
        return address.value or 0

    def _array(self, function: str, *arguments: object) -> list[int]:
        address, count = ctypes.c_void_p(), ctypes.c_int()
        self._call(function, self._context, *arguments, ctypes.byref(address), ctypes.byref(count))
        return _native.addresses_at(address.value, count.value)

    def _call(self, function: str, *arguments: object) -> None:
        self._reasons.clear()
        code = self._functions.call(function, *arguments)
        if code != 0:
            raise Error(code, tuple(self._reasons))

    def _log(
        self, level: int, component: int, _: Optional[int], function: Optional[bytes], message: Optional[bytes]
    ) -> None:
        if level == 2 and not self._traces:
            return
        text = (message or b"").decode("utf-8", "replace").rstrip("\n")
        if level == 0:
            self._reasons.append(text)
        severity = logging.DEBUG if self._quiet else _LEVELS[min(level, 2)]
        logger = logging.getLogger(_LOGGERS.get(component, "zav"))
        logger.log(severity, "%s", text, extra={"zav_function": (function or b"").decode("utf-8", "replace")})

    def __enter__(self) -> _Scan:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        if self._context:
            self._functions.call(f"{self._kind}_free", self._context)
        if self._handle:
            self._functions.call("free", self._handle)


def _number(group: Union[str, int], names: dict[int, str]) -> int:
    for number, name in names.items():
        if group in (number, name):
            return number
    close = difflib.get_close_matches(str(group), names.values(), 1)
    advice = f"did you mean {close[0]!r}?" if close else f"the groups are {', '.join(names.values())}"
    raise Error(Code.HW_GROUP, (f"{group!r}; {advice}",))
