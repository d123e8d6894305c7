import datetime
import logging
import os
import typing

import pytest

import zav
from zav import records

UTC = datetime.timezone.utc

PACKAGE = (
    "<SoftwarePackages><Name>größe 😀</Name><InstalledSize>9223372036854775807</InstalledSize>"
    "<InstallDate>2026-11-21</InstallDate><Section></Section></SoftwarePackages>"
)


def test_values_have_the_types_of_the_catalogue(toolkit):
    toolkit.hardware_is(
        PACKAGE
        + "<Processor><Flags>fpu;vme</Flags><PhysicalPackageId>0</PhysicalPackageId></Processor>"
        + "<OperatingSystem><LastBootUpTime>2016-12-31T23:59:60Z</LastBootUpTime></OperatingSystem>"
        + "<IPv6Address><Temporary>false</Temporary></IPv6Address>"
    )
    groups = toolkit.library().hardware(["SoftwarePackages", "Processor", "OperatingSystem", "IPv6Address"]).groups
    package = groups["SoftwarePackages"][0]
    assert package["Name"] == "größe 😀"
    assert package["InstalledSize"] == 2**63 - 1
    assert package["InstallDate"] == datetime.datetime(2026, 11, 21, tzinfo=UTC)
    assert groups["Processor"][0]["Flags"] == ["fpu", "vme"]
    assert groups["Processor"][0]["PhysicalPackageId"] == 0
    assert groups["OperatingSystem"][0]["LastBootUpTime"] == datetime.datetime(2017, 1, 1, tzinfo=UTC)
    assert groups["IPv6Address"][0]["Temporary"] is False


def test_missing_values_are_none(toolkit):
    toolkit.hardware_is(PACKAGE)
    package = toolkit.library().hardware(["SoftwarePackages"]).groups["SoftwarePackages"][0]
    assert package["Section"] is None
    # The scanner did not write this field at all.
    assert package["Architecture"] is None
    assert package.keys() == typing.get_type_hints(records.SoftwarePackages).keys()


@pytest.mark.parametrize("text", ["-1", "1_000", "0x10", " 1", "1.5", "²"])
def test_value_of_another_form_is_none_and_told(toolkit, caplog, text):
    toolkit.hardware_is(f"<SoftwarePackages><InstalledSize>{text}</InstalledSize></SoftwarePackages>")
    hardware = toolkit.library().hardware(["SoftwarePackages"])
    assert hardware.groups["SoftwarePackages"][0]["InstalledSize"] is None
    assert hardware.texts("SoftwarePackages")[0]["InstalledSize"] == text
    assert "SoftwarePackages.InstalledSize" in caplog.text


def test_field_outside_the_catalogue_is_text(toolkit):
    toolkit.hardware_is("<Processor><Colour>12</Colour></Processor>")
    assert toolkit.library().hardware(["Processor"]).instances("Processor")[0]["Colour"] == "12"


def test_groups_are_named_by_number_too(toolkit):
    toolkit.hardware_is(PACKAGE)
    hardware = toolkit.library().hardware([25, "Processor"])
    assert list(hardware.groups) == ["Processor", "SoftwarePackages"]
    assert hardware.groups["Processor"] == []


def test_without_groups_all_are_scanned(toolkit):
    toolkit.hardware_is(PACKAGE)
    assert toolkit.library().hardware().groups.keys() == typing.get_type_hints(records.Groups).keys()


def test_status_is_what_the_scanner_tells(toolkit):
    toolkit.hardware_is(
        "<ScanInfo><GroupsComplete>Processor;ScanInfo</GroupsComplete><GroupsPartial>Memory=permission</GroupsPartial>"
        "<GroupsUnread>Storage=timeout</GroupsUnread><GroupsNotApplicable>Lpar=other-processor</GroupsNotApplicable></ScanInfo>"
    )
    hardware = toolkit.library().hardware(["Processor", "Memory", "Storage", "Lpar", "Video"])
    assert hardware.status == {
        "Processor": zav.Status("complete"),
        "Memory": zav.Status("partial", "permission"),
        "Storage": zav.Status("unread", "timeout"),
        "Lpar": zav.Status("not-applicable", "other-processor"),
        "Video": zav.Status("unknown"),
    }
    assert not hardware.complete
    assert toolkit.library().hardware(["Processor", "Lpar"]).complete


def test_unknown_group_is_refused_with_advice(toolkit):
    with pytest.raises(zav.Error, match=r"no such hardware group \(101\): 'Procesor'; did you mean 'Processor'") as failure:
        toolkit.library().hardware(["Procesor"])
    assert failure.value.code == zav.Code.HW_GROUP


def test_one_text_is_no_list_of_groups(toolkit):
    with pytest.raises(TypeError, match="Memory"):
        toolkit.library().hardware("Memory")


def test_failure_says_why(toolkit):
    with pytest.raises(zav.Error, match="ENOENT") as failure:
        toolkit.library().hardware(["Processor"])
    assert failure.value.code == zav.Code.HW_SCANNER
    assert failure.value.text == "the hardware scanner could not be started, or it failed"


def test_malformed_output_is_an_error(toolkit):
    toolkit.hardware_is("<Processor>")
    with pytest.raises(zav.Error) as failure:
        toolkit.library().hardware(["Processor"])
    assert failure.value.code == zav.Code.HW_OUTPUT


def test_bundled_scanner_keeps_the_types(bundled):
    """Every value of every group of this machine has the type that its record promises."""
    groups = bundled.hardware().groups
    checked = 0
    for group, instances in groups.items():
        hints = typing.get_type_hints(getattr(records, group))
        for instance in instances:
            assert instance.keys() == hints.keys()
            for field, value in instance.items():
                (wanted,) = (kind for kind in typing.get_args(hints[field]) if kind is not type(None))
                if value is None:
                    continue
                if isinstance(value, list):
                    assert {type(one) for one in value} == set(typing.get_args(wanted)), (group, field, value)
                else:
                    assert type(value) is wanted, (group, field, value)
                if isinstance(value, datetime.datetime):
                    assert value.utcoffset() == datetime.timedelta(0)
                checked += 1
    assert checked > 50
    assert len(groups["Processor"]) >= 1
    # The processors of the scanner are those that Python sees.
    assert sum(one["EnabledState"] == "Enabled" for one in groups["Processor"]) == os.cpu_count()


def test_instances_are_rows_of_a_table(bundled):
    rows = bundled.hardware(["Processor"]).groups["Processor"]
    assert all(type(row) is dict and row.keys() == rows[0].keys() for row in rows)


def test_pandas_takes_the_rows(bundled):
    pandas = pytest.importorskip("pandas")
    hardware = bundled.hardware(["Processor", "OperatingSystem"])
    frame = pandas.DataFrame(hardware.groups["Processor"])
    assert len(frame) == len(hardware.groups["Processor"])
    assert frame["DeviceID"][0] == hardware.groups["Processor"][0]["DeviceID"]
    assert str(pandas.DataFrame(hardware.groups["OperatingSystem"])["LastBootUpTime"].dtype).endswith("UTC]")


def test_messages_go_to_logging(toolkit, caplog):
    caplog.set_level(logging.DEBUG, "zav")
    with pytest.raises(zav.Error):
        toolkit.library().hardware(["Processor"])
    seen = {(record.name, record.levelno) for record in caplog.records}
    assert {("zav.hardware", logging.WARNING), ("zav.hardware", logging.DEBUG), ("zav.library", logging.DEBUG)} <= seen


def test_notices_about_the_installation_come_once(toolkit, caplog):
    toolkit.hardware_is(PACKAGE)
    caplog.set_level(logging.WARNING, "zav")
    library = toolkit.library()
    library.hardware(["Processor"])
    caplog.clear()
    library.hardware(["Processor"])
    assert caplog.records == []
