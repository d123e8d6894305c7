import pytest

import zav

MATCH = (
    "<MatchedSignature guid='a'><Variable name='version' value='1.ü😀'/><Variable name='path' value='/bin/a'/>"
    "<Metadata><Maker>ü😀</Maker></Metadata></MatchedSignature><MatchedSignature guid='b'/>"
)
BASH = (
    "<Signature guid='bash' name='GNU Bash ü'><Match><Package id='p' name='bash'/></Match>"
    "<Output><Variable name='version' value='${p.upstream}'/></Output></Signature>"
)


def test_results_are_copied(toolkit):
    toolkit.software_is(MATCH, "<Event><Name>ü</Name></Event>")
    with toolkit.library() as library:
        software = library.software("<Signature guid='a'/>")
    first, second = software.results
    assert first.guid == "a"
    assert first.variables == {"path": "/bin/a", "version": "1.ü😀"}
    assert "<Maker>ü😀</Maker>" in first.metadata
    assert second == zav.Result("b", {}, "")
    assert len(software.warnings) == 1 and "ü" in software.warnings[0]
    assert software.find("a") == [first] and software.find("c") == []
    assert software.rows() == [{"guid": "a", "path": "/bin/a", "version": "1.ü😀"}, {"guid": "b"}]


def test_signatures_reach_the_scanner_in_utf8(toolkit):
    toolkit.software_is("")
    toolkit.library().software(["<Signature guid='ü😀'/>", "<Signature guid='lone \udcff byte'/>"])
    seen = toolkit.seen("signatures")
    assert "guid='ü😀'".encode() in seen
    assert b"guid='lone \xff byte'" in seen


def test_no_signature_gives_no_result(toolkit):
    toolkit.software_is("")
    assert toolkit.library().software([]).results == []


def test_variables_and_settings_are_escaped(toolkit):
    toolkit.software_is("")
    toolkit.library().software(
        "<Signature guid='a'/>", variables=[("a", "minimum", '<"2" & ü>\n')], settings=[("Secrets", "allow", "/root")]
    )
    seen = toolkit.seen("config").decode()
    assert "&lt;&quot;2&quot; &amp; ü&gt;&#10;" in seen
    assert "/root" in seen


def test_nul_in_a_text_is_refused(toolkit):
    with pytest.raises(ValueError, match="NUL"):
        toolkit.library().software("<Signature guid='\0'/>")


def test_refused_signature_is_an_error(bundled):
    with pytest.raises(zav.Error) as failure:
        bundled.software("<Signature")
    assert failure.value.code == zav.Code.SW_SIGNATURE


def test_missing_file_is_told_as_everywhere_in_python(bundled, tmp_path):
    with pytest.raises(FileNotFoundError):
        bundled.software_file(tmp_path / "none.xml")


def test_file_of_any_name_is_evaluated(toolkit, tmp_path):
    toolkit.software_is(MATCH)
    file = bytes(tmp_path) + b"/\xff \xc3\xa9.xml"
    with open(file, "w", encoding="utf-8") as out:
        out.write("<Signatures/>")
    assert len(toolkit.library().software_file(file).results) == 2
    assert toolkit.seen("signatures") == b"<Signatures/>"


def test_bundled_scanner_is_read(bundled, tmp_path):
    signature = BASH.replace("<Package id='p' name='bash'/>", "<File id='p' path='/usr/bin/env'/>").replace("${p.upstream}", "ü😀")
    (result,) = bundled.software(signature).results
    assert result.variables == {"version": "ü😀"}
    assert "<MatchedName>GNU Bash ü</MatchedName>" in result.metadata
    file = tmp_path / "signatures.xml"
    file.write_text(f"<Signatures>{signature}</Signatures>", encoding="utf-8")
    assert bundled.software_file(file).results == [result]
