#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

ProductFacts readAs(std::string_view format, const RandomAccessFile& file, std::string& damage) {
    if (format == "jar") return readJar(file, damage);
    if (format == "pe") return readWindowsProgram(file, damage);
    return readPythonMetadata(file);
}

void setKnown(Item& item, std::string_view name, std::string_view value) {
    if (!value.empty()) item.set(name, std::string(value.substr(0, kMaxValueSize)));
}

}  // namespace

LeafResult lookUpFileVersion(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    const std::string_view format = query.get(Attribute::Format);
    if (format != "jar" && format != "pe" && format != "python-dist") {
        result.fail(EventCode::Unsupported, path, "unknown format \"" + std::string(format) + "\"");
        return result;
    }
    const std::optional<RandomAccessFile> file = openFile(path, context, result);
    if (!file) return result;
    std::string damage;
    const ProductFacts facts = readAs(format, *file, damage);
    if (!damage.empty()) result.fail(EventCode::Parse, path, damage);
    const Scheme defaultScheme = format == "python-dist" ? Scheme::Pep440 : Scheme::Dotted;
    // A file without a version does not pass.
    if (facts.version.empty() || !passesVersionTests(query, defaultScheme, facts.version, path, result))
        return result;
    Item item;
    item.source = path;
    setKnown(item, "name", facts.name);
    setKnown(item, "version", facts.version);
    setKnown(item, "vendor", facts.vendor);
    keepItem(context.budget(), result, std::move(item));
    return result;
}

}  // namespace toolkit::quorvis
