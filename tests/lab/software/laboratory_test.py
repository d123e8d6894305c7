"""Tests of the laboratory itself. They make small packages with dpkg-deb and an archive of them in a temporary directory."""
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import impostors
import mirror as mirrors
import page
import trees
from outcome import NOT_FOUND, RIGHT, VERSIONLESS, WRONG, Outcome, Totals
from products import Product, Table, TableFault
from scanner import REPOSITORY, Result
from subjects import Storeroom, Subject
from versions import spelled_alike, upstream


class Scratch(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.scratch = directory.name

    def path(self, *parts):
        return os.path.join(self.scratch, *parts)

    def package(self, name, version, files=(), links=(), directory="archives", source=""):
        """Builds a package. files: paths; links: (path, text)."""
        root = tempfile.mkdtemp(dir=self.scratch)
        os.chmod(root, 0o755)
        os.mkdir(os.path.join(root, "DEBIAN"))
        control = (f"Package: {name}\nVersion: {version}\nSource: {source or name}\nArchitecture: all\n"
                   "Maintainer: Nobody <nobody@example.com>\nDescription: a test\n")
        with open(os.path.join(root, "DEBIAN/control"), "w") as file:
            file.write(control)
        for path in files:
            os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
            with open(os.path.join(root, path), "w") as file:
                file.write(name)
        for path, text in links:
            os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
            os.symlink(text, os.path.join(root, path))
        os.makedirs(self.path(directory), exist_ok=True)
        archive = self.path(directory, f"{name}_{version.replace(':', '%3a')}_all.deb")
        subprocess.run(["dpkg-deb", "--root-owner-group", "-b", root, archive], check=True, stdout=subprocess.DEVNULL)
        return archive, control


class UpstreamVersions(unittest.TestCase):
    def test_epoch_revision_and_marks_are_removed(self):
        for package, expected in (
                ("1:9.2p1-2+deb12u10", "9.2p1"), ("5.2.15-2+b13", "5.2.15"), ("3.0.11.33637.ds4-2+deb12u1", "3.0.11.33637"),
                ("1:1.2.13.dfsg-1", "1.2.13"), ("1:1.3.dfsg+really1.3.1-1+deb13u1", "1.3.1"), ("8.1.1+dfsg1-3+deb13u3", "8.1.1"),
                ("1:4.16.0-2+really2.41.5-0+deb13u1", "2.41.5"), ("2.12.7+dfsg+really2.9.14-2.1+deb13u3", "2.9.14"),
                ("1.19.2~ds1-1+b4", "1.19.2"), ("3.6.1+dfsg+~3.5.14-1", "3.6.1"), ("1.22.19+~cs24.27.18-2", "1.22.19"),
                ("4:5.2.2-really+dfsg-1+deb13u1", "5.2.2"), ("2.7.4+dfsg.1-2", "2.7.4"), ("20230128", "20230128"),
                ("1.4.6~deb12u1", "1.4.6")):
            self.assertEqual(expected, upstream(package), package)

    def test_spellings_of_one_version(self):
        for one, other, alike in (("5.2", "5.2.0", True), ("2.9.0", "2.9", True), ("2.22.0~beta2", "2.22.0b2", True),
                                  ("9.0.0~rc1", "9.0.0-rc1", True), ("1.2~dev", "1.2-dev", True), ("5.2", "5.2.1", False),
                                  ("1.10", "1.1", False), ("1.0~rc1", "1.0~rc2", False), ("1.0~rc1", "1.0", False),
                                  ("9.2p1", "9.2", False)):
            self.assertEqual(alike, spelled_alike(one, other), (one, other))

    def test_other_suffixes_stay(self):
        for package, expected in (("2.0.11-1.2", "2.0.11"), ("1.6.7~rc0-1", "1.6.7~rc0"), ("2.1.12-stable-8", "2.1.12-stable"),
                                  ("4.4.3-P1-2", "4.4.3-P1"), ("17.0.21.1+2-1~deb12u1", "17.0.21.1+2")):
            self.assertEqual(expected, upstream(package), package)


class Trees(Scratch):
    def test_documentation_is_left_out(self):
        archive, _ = self.package("tool", "1-1", ["usr/bin/tool", "usr/share/doc/tool/copyright"])
        trees.unpack([archive], self.path("tree"))
        self.assertTrue(os.path.isfile(self.path("tree/usr/bin/tool")))
        self.assertFalse(os.path.lexists(self.path("tree/usr/share/doc")))

    def test_link_to_documentation_is_not_followed(self):
        os.makedirs(self.path("outside/doc"))
        archive, _ = self.package("tool", "1-1", links=[("usr/share", self.path("outside"))])
        trees.unpack([archive], self.path("tree"))
        self.assertTrue(os.path.isdir(self.path("outside/doc")))

    def test_file_below_link_of_another_package_stays_in_the_tree(self):
        os.mkdir(self.path("outside"))
        first, _ = self.package("first", "1-1", links=[("usr/lib/data", self.path("outside"))])
        second, _ = self.package("second", "1-1", ["usr/lib/data/file"])
        trees.unpack([first, second], self.path("tree"))
        self.assertEqual([], os.listdir(self.path("outside")))
        self.assertTrue(os.path.isfile(self.path("tree") + self.path("outside/file")))

    def test_links_upwards_end_at_the_root(self):
        first, _ = self.package("first", "1-1", links=[("data", "../../../../../../../../elsewhere")])
        second, _ = self.package("second", "1-1", ["data/file"])
        trees.unpack([first, second], self.path("tree"))
        self.assertTrue(os.path.isfile(self.path("tree/elsewhere/file")))

    def test_circle_of_links_is_an_error_and_leaves_no_tree(self):
        first, _ = self.package("first", "1-1", links=[("a", "b"), ("b", "a")])
        second, _ = self.package("second", "1-1", ["a/file"])
        with self.assertRaises(OSError):
            trees.unpack([first, second], self.path("made/tree"))
        self.assertEqual([], os.listdir(self.path("made")))

    def test_programs_and_libraries_are_moved_and_settings_are_not(self):
        archive, _ = self.package("tool", "1-1", ["usr/bin/tool", "bin/small", "etc/tool.conf", "usr/lib/x/libx.so.1"],
                                  [("usr/bin/x", "/usr/bin/tool"), ("usr/bin/y", "tool")])
        trees.unpack([archive], self.path("tree"), "opt/tool-1")
        for path in ("opt/tool-1/bin/tool", "opt/tool-1/bin/small", "opt/tool-1/lib/x/libx.so.1", "etc/tool.conf"):
            self.assertTrue(os.path.isfile(self.path("tree", path)), path)
        self.assertEqual("/opt/tool-1/bin/tool", os.readlink(self.path("tree/opt/tool-1/bin/x")))
        self.assertEqual("tool", os.readlink(self.path("tree/opt/tool-1/bin/y")))
        self.assertFalse(os.path.exists(self.path("tree/usr/bin/tool")))

    def test_a_third_of_the_table_is_moved_to_every_place(self):
        places = [trees.new_place(product.name, "1") for product in Table().products]
        moved = [place for place in places if place]
        self.assertAlmostEqual(1 / 3, len(moved) / len(places), delta=0.05)
        self.assertEqual({"opt", "usr", "srv", "home"}, {place.split("/")[0] for place in moved})


class WithArchive(Scratch):
    def archive(self, *packages):
        index = ""
        for name, version, *source in packages:
            path, control = self.package(name, version, source="".join(source))
            with open(path, "rb") as file:
                content = file.read()
            index += (control + f"Filename: ./{os.path.basename(path)}\nSize: {len(content)}\n"
                      f"SHA256: {hashlib.sha256(content).hexdigest()}\n\n")
        with open(self.path("archives/Packages"), "w") as file:
            file.write(index)

    def sources(self, trust="[trusted=yes] "):
        return f"deb {trust}file:{self.path('archives')} ./\n"


class Sources(unittest.TestCase):
    def suites(self, suite):
        return {line.split(" ")[-2] for line in mirrors.sources_of_machine(suite).splitlines()}

    def test_suites_without_updates_have_one_line(self):
        for suite in ("sid", "trixie-backports"):
            self.assertEqual({suite}, self.suites(suite))


class Mirrors(WithArchive):
    def mirror(self, trust="[trusted=yes] "):
        return mirrors.Mirror("suite", self.path("cache"), self.sources(trust))

    def test_newest_package_of_a_name_and_of_a_pattern(self):
        self.archive(("tool", "1:2.0-1"), ("tool", "1:10.0-1"), ("image-6.9-cloud", "6.9-1"), ("image-6.12-cloud", "6.12-1"))
        found = self.mirror().resolve({"tool", "image-[0-9]*-cloud", "missing", "missing*"})
        self.assertEqual({"tool": "1:10.0-1", "image-[0-9]*-cloud": "6.12-1"},
                         {pattern: package.version for pattern, package in found.items()})

    def test_package_of_another_suite_may_have_other_numbers(self):
        for known, other in (("libssl3t64", "libssl1.1"), ("php8.4-cli", "php7.4-cli"), ("libicu76", "libicu80t64"),
                             ("nginx", "nginx")):
            self.archive((other, "1-1"), (other + "-dev", "1-1"))
            found = self.mirror().resolve({mirrors.with_other_numbers(known)})
            self.assertEqual([other], [package.name for package in found.values()])
            shutil.rmtree(self.path("cache"))

    def test_resolved_names_are_remembered_with_those_that_are_missing(self):
        self.archive(("tool", "1-1"))
        self.mirror().resolve({"tool", "missing"})
        self.assertEqual(["tool"], list(self.mirror().resolve({"tool", "missing"})))

    def test_fetched_package_is_kept(self):
        self.archive(("tool", "1:2.0-1"))
        mirror = self.mirror()
        packages = mirror.resolve({"tool"}).values()
        mirror.fetch(packages)
        os.unlink(self.path("archives/tool_1%3a2.0-1_all.deb"))
        mirror.fetch(packages)
        self.assertTrue(all(os.path.isfile(mirror.archive(package)) for package in packages))

    def test_package_that_differs_from_the_index_is_refused(self):
        self.archive(("tool", "1-1"))
        mirror = self.mirror()
        packages = list(mirror.resolve({"tool"}).values())
        with open(self.path("archives/tool_1-1_all.deb"), "r+b") as file:
            file.seek(-1, os.SEEK_END)
            file.write(b"x")
        with self.assertRaises(mirrors.MirrorFault):
            mirror.fetch(packages)
        self.assertFalse(os.path.exists(mirror.archive(packages[0])))

    def test_package_that_is_listed_and_not_there_is_told_and_others_are_fetched(self):
        self.archive(("tool", "1-1"), ("other", "1-1"))
        mirror = self.mirror()
        packages = mirror.resolve({"tool", "other"})
        os.unlink(self.path("archives/tool_1-1_all.deb"))
        self.assertEqual([packages["tool"]], mirror.fetch(packages.values()))
        self.assertTrue(os.path.isfile(mirror.archive(packages["other"])))

    def test_index_without_a_signature_is_refused(self):
        self.archive(("tool", "1-1"))
        with self.assertRaises(mirrors.MirrorFault):
            self.mirror(trust="")

    def test_mirror_that_does_not_answer_is_out_of_reach(self):
        with self.assertRaises(mirrors.MirrorUnreachable):
            mirrors.Mirror("suite", self.path("cache"), "deb [trusted=yes] http://127.0.0.1:9/debian ./\n")


class Subjects(WithArchive):
    def tree(self, product):
        storeroom = Storeroom(self.path("cache"), "trixie", self.sources())
        subject, = storeroom.subjects([product], moved=False)
        return storeroom.tree(subject)

    def test_tree_is_made_anew_for_a_newer_package(self):
        tool = Product("family", "tool", "tool")
        self.archive(("tool", "1-1"))
        with open(os.path.join(self.tree(tool), "mark"), "w"):
            pass
        self.assertIn("mark", os.listdir(self.tree(tool)))
        shutil.rmtree(self.path("archives"))
        self.archive(("tool", "2-1"))
        os.unlink(self.path("cache/trixie/apt/updated"))
        self.assertNotIn("mark", os.listdir(self.tree(tool)))

    def test_package_that_the_suite_does_not_have_is_a_fault_of_the_table(self):
        self.archive(("tool", "1-1"))
        storeroom = Storeroom(self.path("cache"), "trixie", self.sources())
        with self.assertRaises(TableFault):
            storeroom.subjects([Product("family", "tool", "tool renamed")], moved=False)
        self.assertEqual([], storeroom.subjects([Product("family", "older", {"bookworm": "older"})], moved=False))

    def test_package_that_an_architecture_does_not_have_is_left_out(self):
        self.archive(("tool", "1-1"))
        machine = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()
        storeroom = Storeroom(self.path("cache"), "trixie", self.sources(), machine)
        subject, = storeroom.subjects([Product("family", "tool", "tool"), Product("family", "other", "other")], moved=False)
        self.assertEqual("tool", subject.product.name)
        self.assertTrue(os.path.isdir(self.path("cache", f"trixie-{machine}", "packages")))

    def test_other_suites_have_packages_of_other_names(self):
        tool = Product("family", "tool", {"packages": "tool4 libtool1", "elsewhere": "tool5 tool libtool1"})
        self.archive(("tool", "2-1"), ("tool5", "5-1"), ("libtool1", "1-1"))
        subject, = Storeroom(self.path("cache"), "newer", self.sources()).subjects([tool], moved=False)
        self.assertEqual(["tool5", "tool", "libtool1"], [package.name for package in subject.packages])

    def test_alternative_with_the_most_packages_is_taken(self):
        self.archive(("tool", "2-1"), ("libtool7", "2-1"))
        subject, = Storeroom(self.path("cache"), "newer", self.sources()).subjects(
            [Product("family", "tool", "tool libtool1")], moved=False)
        self.assertEqual(["tool", "libtool7"], [package.name for package in subject.packages])

    def test_library_that_an_earlier_version_left_in_the_suite_is_not_taken(self):
        self.archive(("tool", "3-1"), ("libtool1", "1-1", "tool"), ("libtool3", "3-1", "tool"))
        subject, = Storeroom(self.path("cache"), "newer", self.sources()).subjects(
            [Product("family", "tool", "tool libtool1")], moved=False)
        self.assertEqual(["tool", "libtool3"], [package.name for package in subject.packages])


class WithOutcomes(unittest.TestCase):
    def result(self, guid, version, path=""):
        element = ElementTree.Element("MatchedSignature", guid=guid, name=guid)
        ElementTree.SubElement(element, "Variable", name="version", value=version)
        ElementTree.SubElement(element, "Variable", name="path", value=path)
        return Result(element)

    def outcome(self, *results, name="tool", **row):
        product = Product("family", name, {"packages": "tool", **row})
        package = mirrors.Package({"Package": "tool", "Version": "1.2-1", "Size": "1", "Architecture": "all"})
        found = [self.result(*result) for result in results]
        return Outcome(Subject(product, [package], "trixie", None), found, [], ["zav.package"])


class Outcomes(WithOutcomes):
    def test_states(self):
        for results, state in (((), NOT_FOUND), ((("zav.tool", "1.2"),), RIGHT), ((("zav.tool.copy", "1.2"),), RIGHT),
                               ((("zav.tool", ""),), VERSIONLESS), ((("zav.tool", "1.3"),), WRONG),
                               ((("zav.tool", "1.2"), ("zav.tool", "1.20")), WRONG), ((("zav.toolbox", "1.2"),), NOT_FOUND)):
            self.assertEqual(state, self.outcome(*results).state, results)

    def test_other_products_are_foreign_unless_allowed_or_catalogued(self):
        outcome = self.outcome(("zav.tool", "1.2"), ("zav.other", "3"), ("zav.zlib", "1.3"), ("zav.package.npm", "4"),
                               also={"zav.zlib": "linked statically"})
        self.assertEqual(["zav.other"], [result.guid for result in outcome.foreign])

    def test_figures_are_missed_by_one_wrong_or_foreign_result(self):
        right = self.outcome(("zav.tool", "1.2"))
        self.assertTrue(Totals([right] * 100).are_met())
        self.assertTrue(Totals([right] * 97 + [self.outcome()] * 3).are_met())
        self.assertFalse(Totals([right] * 96 + [self.outcome()] * 4).are_met())
        self.assertFalse(Totals([right] * 99 + [self.outcome(("zav.tool", "1.3"))]).are_met())
        self.assertFalse(Totals([right] * 99 + [self.outcome(("zav.tool", "1.2"), ("zav.other", "3"))]).are_met())

    def test_second_result_for_a_version_in_an_installation_is_repeated(self):
        program = ("zav.tool", "1.2", "/usr/bin/tool")
        for other, repeated in ((("zav.tool", "1.2", "/usr/lib/x86_64-linux-gnu/libtool.so.1"), 1),
                                (("zav.tool", "1.2", "/bin/tool2"), 1), (("zav.tool", "", "/usr/sbin/toold"), 1),
                                (("zav.tool", "1.3", "/usr/sbin/toold"), 0), (("zav.tool.server", "1.2", "/usr/sbin/toold"), 0),
                                (("zav.tool", "1.2", "/usr/local/bin/tool"), 0), (("zav.tool", "1.2", "/opt/tool-1.2/tool"), 0)):
            outcome = self.outcome(program, other)
            self.assertEqual(repeated, len(outcome.repeated), other)
            self.assertEqual(repeated == 0, Totals([outcome]).are_met() or outcome.state == WRONG, other)

    def test_product_that_tells_no_version_must_be_found_without_one(self):
        right = self.outcome(("zav.tool", "1.2"))
        found = self.outcome(("zav.tool", ""), untold="its version is in no file")
        self.assertTrue(Totals([right, found]).are_met())
        self.assertFalse(Totals([right, self.outcome(untold="its version is in no file")]).are_met())
        self.assertFalse(Totals([right, self.outcome(("zav.tool", "7"), untold="its version is in no file")]).are_met())


class Pages(WithOutcomes, Scratch):
    def test_page_tells_versions_reasons_and_what_is_not_proven(self):
        outcomes = {"trixie": [self.outcome(("zav.tool", "1.2")),
                               self.outcome(("zav.quiet", ""), name="quiet", untold="its version is in no file"),
                               self.outcome(name="missing")]}
        signatures = {guid: ElementTree.Element("Signature", guid=guid, name=guid.upper())
                      for guid in ("zav.tool", "zav.quiet", "zav.other", "zav.package.npm")}
        page.write(self.path("page.md"), outcomes, {"trixie": Totals(outcomes["trixie"])}, signatures, ["zav.package"])
        with open(self.path("page.md")) as file:
            lines = file.read().splitlines()
        self.assertIn("| trixie | 3 | 1 | 0 | 1 | 1 | 0 |", lines)
        self.assertIn("| ZAV.TOOL | `zav.tool` | 1.2 |  |", lines)
        self.assertIn("| ZAV.QUIET | `zav.quiet` | found without a version in 1.2: its version is in no file |  |", lines)
        self.assertIn("| missing |  | not found in 1.2 |  |", lines)
        self.assertIn("| ZAV.OTHER | `zav.other` |", lines)
        self.assertIn("`zav.package.npm`.", lines)

    def test_page_of_the_project_has_every_product(self):
        with open(os.path.join(REPOSITORY, "docs/software-catalogue.md")) as file:
            text = file.read()
        for product in Table().products:
            self.assertTrue(any(f"`{guid}`" in text or f"`{guid}." in text for guid in product.guids), product.name)


class Impostors(Scratch):
    def test_each_alternative_of_a_pattern_has_a_file(self):
        signature = ElementTree.fromstring('<Signature><Each><Glob pattern="/**/{tool,tool-[0-9]*}.so*"/></Each></Signature>')
        paths = impostors.names([signature])
        self.assertEqual(["/place/tool-1.2.3.so1.2.3", "/place/tool.so1.2.3"], paths)
        for kind in ("script", "text", "program"):
            impostors.make(self.path(kind), paths, kind)
            self.assertEqual(2, len(os.listdir(self.path(kind, "place"))))

    def test_only_a_copy_of_the_program_may_be_reported_as_what_it_is(self):
        result = WithOutcomes().result("zav.coreutils", "9.1")
        self.assertFalse(impostors.is_wrong(result, "program", lambda guid: False))
        self.assertTrue(impostors.is_wrong(result, "text", lambda guid: False))
        self.assertFalse(impostors.is_wrong(result, "text", lambda guid: True))


class Tables(unittest.TestCase):
    def test_table_has_a_sample_and_reasons(self):
        table = Table()
        self.assertGreater(len(table.products), 250)
        self.assertEqual(25, sum(product.sample for product in table.products))
        for product in table.products:
            self.assertTrue(all(len(reason) > 10 for reason in product.also.values()), product.name)

    def test_unknown_product_is_refused(self):
        with self.assertRaises(TableFault):
            Table().select(["nginx", "no-such-product"])

    def test_what_holds_for_a_suite_holds_for_those_near_it(self):
        tool = Product("family", "tool", {"packages": "tool", "untold": {"bookworm": "old", "forky": "new"},
                                          "version": {"trixie": ["$", "x"]}})
        self.assertEqual(["old", "old", "", "new", "new"],
                         [tool.untold(suite) for suite in ("bullseye", "bookworm", "trixie", "forky", "sid")])
        self.assertEqual(["1", "1", "1x", "1x"],
                         [tool.told_version("1", suite) for suite in ("bullseye", "bookworm", "trixie", "forky")])

    def test_unknown_key_is_refused(self):
        with self.assertRaises(ValueError):
            Product("family", "tool", {"packages": "tool", "package": "tool"})


if __name__ == "__main__":
    unittest.main()
