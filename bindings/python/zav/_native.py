"""The functions of zav.h, and how their texts become those of Python."""

from __future__ import annotations

import ctypes
import os
import sys
from typing import Callable, Optional, Union

StrPath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

LIBRARY = "libzav.so.1"

# level, component, user data, function, message
LOG_CALLBACK = ctypes.CFUNCTYPE(
    None, ctypes.c_int, ctypes.c_int, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p
)

_POINTER = ctypes.POINTER(ctypes.c_void_p)
_COUNT = ctypes.POINTER(ctypes.c_int)
_HANDLE = ctypes.c_void_p
_WIDE = ctypes.c_wchar_p

_ARGUMENTS: dict[str, list[type]] = {
    "ZAV_init": [ctypes.c_char_p, LOG_CALLBACK, ctypes.c_void_p, _WIDE, _WIDE, _POINTER],
    "ZAV_free": [_HANDLE],
    "ZAV_hw_init": [_HANDLE, LOG_CALLBACK, ctypes.c_void_p, _POINTER],
    "ZAV_hw_setopt": [_HANDLE, ctypes.c_int, ctypes.c_ubyte],
    "ZAV_hw_run": [_HANDLE],
    "ZAV_hw_get_group_name": [_HANDLE, ctypes.c_int, _POINTER],
    "ZAV_hw_get_group_instances": [_HANDLE, ctypes.c_int, _COUNT],
    "ZAV_hw_get_fields": [_HANDLE, ctypes.c_int, ctypes.c_int, _POINTER, _COUNT],
    "ZAV_hw_get_value": [_HANDLE, ctypes.c_int, ctypes.c_int, ctypes.c_void_p, _POINTER],
    "ZAV_hw_free": [_HANDLE],
    "ZAV_sw_init": [_HANDLE, LOG_CALLBACK, ctypes.c_void_p, _POINTER],
    "ZAV_sw_setopt_variable": [_HANDLE, _WIDE, _WIDE, _WIDE],
    "ZAV_sw_setopt_config": [_HANDLE, _WIDE, _WIDE, _WIDE],
    "ZAV_sw_evaluate_file": [_HANDLE, _WIDE],
    "ZAV_sw_evaluate_multi": [_HANDLE, ctypes.POINTER(_WIDE), ctypes.c_uint],
    "ZAV_sw_get_results": [_HANDLE, _POINTER, _COUNT],
    "ZAV_sw_get_value": [_HANDLE, ctypes.c_void_p, ctypes.c_void_p, _POINTER],
    "ZAV_sw_get_variables": [_HANDLE, ctypes.c_void_p, _POINTER, _COUNT],
    "ZAV_sw_get_metadata": [_HANDLE, ctypes.c_void_p, _POINTER],
    "ZAV_sw_get_guid": [_HANDLE, ctypes.c_void_p, _POINTER],
    "ZAV_sw_get_warnings": [_HANDLE, _POINTER, _COUNT],
    "ZAV_sw_free": [_HANDLE],
}


class Functions:
    """The functions of the shared library, by name without the prefix: `functions.call("hw_run", context)`."""

    def __init__(self, path: Optional[StrPath] = None) -> None:
        """Loads the library from a path, or from the one that ZAV_LIBRARY names, or where the system has it."""
        name = os.fsdecode(path) if path is not None else os.environ.get("ZAV_LIBRARY") or LIBRARY
        try:
            library = ctypes.CDLL(name)
        except OSError as error:
            raise OSError(
                f"cannot load {name} ({error}); install the package libzav1, "
                "or name the file with library= or the environment variable ZAV_LIBRARY"
            ) from error
        self._functions: dict[str, Callable[..., int]] = {}
        for function, arguments in _ARGUMENTS.items():
            native = getattr(library, function)
            native.argtypes = arguments
            native.restype = ctypes.c_int
            self._functions[function[len("ZAV_") :]] = native

    def call(self, function: str, *arguments: object) -> int:
        return self._functions[function](*arguments)

    def get(self, function: str) -> Callable[..., int]:
        return self._functions[function]


def text_at(address: int) -> str:
    """A copy of a text of the library, whose wide characters are Unicode characters."""
    try:
        text = ctypes.wstring_at(address)
    except ValueError:  # beyond the characters of Unicode
        return _wide_at(address).decode(_UTF32, "replace")
    if text.isascii():
        return text
    # What is no character on its own could not be written as UTF-8.
    return text.encode("utf-16", "surrogatepass").decode("utf-16", "replace")


def bytes_at(address: int) -> str:
    """A copy of a text whose wide characters are the bytes of UTF-8, signed: metadata and warnings."""
    wide = _wide_at(address)
    size = ctypes.sizeof(ctypes.c_wchar)
    return wide[0 if sys.byteorder == "little" else size - 1 :: size].decode("utf-8", "replace")


_wcslen = ctypes.CDLL(None).wcslen
_wcslen.argtypes = [ctypes.c_void_p]
_wcslen.restype = ctypes.c_size_t

_UTF32 = "utf-32-le" if sys.byteorder == "little" else "utf-32-be"


def _wide_at(address: int) -> bytes:
    length: int = _wcslen(address)
    return ctypes.string_at(address, length * ctypes.sizeof(ctypes.c_wchar))


def addresses_at(address: Optional[int], count: int) -> list[int]:
    """The pointers of an array of the library."""
    if not address or count == 0:
        return []
    return list((ctypes.c_size_t * count).from_address(address))


def wide_text(text: str) -> str:
    """Text as the library takes it: one wide character for each byte of its UTF-8 form."""
    return _without_nul(text.encode("utf-8", "surrogateescape").decode("latin-1"))


def wide_path(path: StrPath) -> str:
    """A path as the library takes it: one wide character for each byte."""
    return _without_nul(os.fsencode(path).decode("latin-1"))


def _without_nul(text: str) -> str:
    if "\0" in text:
        raise ValueError("a text for the library contains a NUL character")
    return text


_ESCAPES = str.maketrans(
    {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "\t": "&#9;", "\n": "&#10;", "\r": "&#13;"}
)


def xml_text(text: str) -> str:
    """Text as the library takes it where it becomes a part of XML."""
    return wide_text(text.translate(_ESCAPES))
