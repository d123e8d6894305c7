"""Tests of the laboratory itself, without a virtual machine."""
import io
import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import expectations
import images
import inventory
from cpio import Archive
from expectations import MISSING, RIGHT, UNTOLD, WRONG, ExpectationFault
from machine import all_machines

INVENTORY = inventory.read(b"""<Hardware>
<Storage><Name>sda</Name><SerialNumber>A 1</SerialNumber><Size>100</Size><Model/></Storage>
<Storage><Name>sdb</Name><SerialNumber>B 2</SerialNumber><Size>200</Size><Model>disk</Model></Storage>
</Hardware>""")


class Expectations(unittest.TestCase):
    def read(self, text):
        with tempfile.NamedTemporaryFile("w", suffix=".expected") as file:
            file.write(text)
            file.flush()
            return expectations.read(file.name, {"kernel": "6.1"})

    def states(self, text, hidden=None):
        return [finding.state for finding in expectations.compare(self.read(text), INVENTORY, hidden)]

    def test_values_are_compared_as_they_are(self):
        self.assertEqual([RIGHT, WRONG, MISSING],
                         self.states("[Storage Name=sda]\nSize = 100\nSerialNumber = A\nModel = disk\n"))

    def test_limits_are_inclusive(self):
        self.assertEqual([RIGHT, RIGHT, WRONG],
                         self.states("[Storage Name=sda]\nSize = 100..200\nSize = 50..100\nSize = 101..200\n"))

    def test_what_there_is_not_must_be_empty(self):
        self.assertEqual([RIGHT, UNTOLD], self.states("[Storage Name=sda]\nModel = (none)\nModel = (not told: no file)\n"))
        self.assertEqual([WRONG, WRONG], self.states("[Storage Name=sdb]\nModel = (none)\nModel = (not told: no file)\n"))

    def test_instances_are_counted(self):
        self.assertEqual([RIGHT, WRONG, MISSING], self.states("[Storage]\ncount = 2\ncount = 1\ncount = 3\n"))
        self.assertEqual([RIGHT, WRONG], self.states("[absent Storage Name=sdc]\n[absent Storage Name=sda]\n"))

    def test_a_selector_names_one_instance(self):
        self.assertEqual([MISSING, WRONG], self.states("[Storage Name=sdc]\nSize = 1\n[Storage]\nSize = 100\n"))

    def test_blanks_of_a_selector_are_written_as_underscores(self):
        self.assertEqual([RIGHT], self.states("[Storage SerialNumber=B_2]\nSize = 200\n"))

    def test_a_field_that_no_group_has_is_wrong(self):
        self.assertEqual([WRONG], self.states("[Storage Name=sda]\nSzie = (none)\n"))

    def test_a_user_may_miss_what_only_root_can_see(self):
        text = "[Storage Name=sda]\nModel = disk\nSize = 7\n"
        self.assertEqual([MISSING, WRONG], self.states(text, hidden=set()))
        self.assertEqual([WRONG], self.states(text, hidden={("Storage", "Model"), ("Storage", "Size")}))
        self.assertEqual([WRONG], self.states("[root Storage Name=sda]\nModel = disk\nSize = 7\n", hidden=set()))

    def test_variables_are_replaced(self):
        self.assertEqual("6.1-x", self.read("[OperatingSystem]\nVersion = {kernel}-x\n")[0].value)

    def test_other_lines_are_refused(self):
        for text in ("Size = 1\n", "[Storage]\nSize\n", "[Storage Name]\nSize = 1\n", "[absent Storage Name=a]\nSize = 1\n", "# only\n"):
            with self.assertRaises(ExpectationFault, msg=text):
                self.read(text)


class Machines(unittest.TestCase):
    def test_every_machine_has_expectations_of_groups_and_fields_that_exist(self):
        fields = {(group, field) for group, field, _ in inventory.fields_of_page()}
        for machine in all_machines():
            for each in machine.expectations("6.1"):
                for field in [each.field, *each.selector]:
                    self.assertTrue(field == "count" or (each.group, field) in fields,
                                    f"{machine.name}: line {each.line}: {each.group} has no field {field}")


class Images(unittest.TestCase):
    def test_contents_lie_where_they_belong(self):
        with tempfile.TemporaryDirectory() as directory:
            path = images.make({"name": "disk", "size": "3M", "content": [
                {"at": "1M", "size": "1M", "make": "printf lab >\"$1\""}]}, directory)
            with open(path, "rb") as file:
                content = file.read()
        self.assertEqual(3 << 20, len(content))
        self.assertEqual(1 << 20, content.index(b"lab"))

    def test_a_command_that_fails_is_told(self):
        with tempfile.TemporaryDirectory() as directory:
            with self.assertRaises(images.ImageFault):
                images.make({"name": "disk", "size": "1M", "content": [{"at": "0", "size": "1K", "make": "exit 3"}]}, directory)


class FirstFileSystem(unittest.TestCase):
    def test_entries_have_headers_of_the_format(self):
        made = io.BytesIO()
        archive = Archive(made)
        archive.write("etc/name", b"lab\n")
        archive.link("bin/sh", "busybox")
        archive.close()
        content = made.getvalue()
        self.assertEqual(0, len(content) % 4)
        names, position = [], 0
        while not names or names[-1] != b"TRAILER!!!":
            self.assertEqual(b"070701", content[position:position + 6])
            size, length = (int(content[position + at:position + at + 8], 16) for at in (54, 94))
            names.append(content[position + 110:position + 110 + length - 1])
            position += 110 + length
            position += -position % 4
            position += size + -size % 4
        self.assertEqual([b"etc", b"etc/name", b"bin", b"bin/sh", b"TRAILER!!!"], names)


if __name__ == "__main__":
    unittest.main()
