import pathlib
import shutil
import subprocess

import pytest

import zav

HERE = pathlib.Path(__file__).parent

pytestmark = pytest.mark.skipif(shutil.which("mypy") is None, reason="mypy is not installed")


def mypy(program: pathlib.Path, cache: pathlib.Path):
    command = ["mypy", "--strict", "--no-error-summary", "--cache-dir", cache, "-p", "zav"]
    if program.suffix:
        command[-2:] = [program]
    return subprocess.run(command, cwd=pathlib.Path(zav.__file__).parent.parent, capture_output=True, text=True)


def test_package_is_typed(tmp_path):
    checked = mypy(pathlib.Path("zav"), tmp_path)
    assert (checked.returncode, checked.stdout) == (0, "")


def test_program_with_the_right_types_is_accepted(tmp_path):
    checked = mypy(HERE / "typed_program.py", tmp_path)
    assert (checked.returncode, checked.stdout) == (0, "")


def test_wrong_types_are_found(tmp_path):
    program = HERE / "wrongly_typed_program.py"
    wrong = {number for number, line in enumerate(program.read_text().splitlines(), 1) if "# wrong" in line}
    found = {int(line.split(":")[1]) for line in mypy(program, tmp_path).stdout.splitlines() if ": error:" in line}
    assert found == wrong
