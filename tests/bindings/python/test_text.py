import ctypes

import pytest

from zav import _native


def at(*characters: int):
    return (ctypes.c_int32 * (len(characters) + 1))(*characters, 0)


@pytest.mark.parametrize(
    "characters, text",
    [
        ([], ""),
        ([0x41, 0x7F], "A\x7f"),
        ([0xFC, 0x1F600], "ü😀"),
        ([0x41, 0xD800], "A\ufffd"),
        ([0x41, 0x110000, 0xFC], "A\ufffdü"),
        ([0x41, -1], "A\ufffd"),
    ],
)
def test_wide_characters_become_text(characters, text):
    wide = at(*characters)
    assert _native.text_at(ctypes.addressof(wide)) == text
    text.encode("utf-8")


def test_bytes_of_utf8_become_text():
    wide = at(0x41, 0xC3 - 256, 0xBC - 256, *(byte - 256 for byte in "😀".encode()), 0xFF - 256)
    assert _native.bytes_at(ctypes.addressof(wide)) == "Aü😀\ufffd"
    assert _native.bytes_at(ctypes.addressof(at())) == ""


def test_empty_arrays_have_no_address():
    assert _native.addresses_at(None, 0) == []
