#include "toolkit/quorvis/language/SignatureReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/XmlReader.h"
#include "toolkit/quorvis/language/DetectionParser.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafParser.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxSignatures = 100'000;
constexpr std::size_t kMaxChildren = 2 * kMaxSignatures;
constexpr std::size_t kMaxProblems = 1'000;
constexpr std::size_t kFirstBlockSize = std::size_t{256} << 10;
constexpr std::size_t kMinTypicalSize = 200;  // bytes of a signature
constexpr std::size_t kMaxConditions = 200;
constexpr std::size_t kMaxGuidSize = 128;
constexpr std::size_t kMaxMetadataSize = std::size_t{1} << 20;
constexpr std::size_t kMaxDetections = 64;
constexpr std::size_t kMaxIdentities = 16;

bool isGuid(std::string_view text) {
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view(".:_{}-").find(c) != std::string_view::npos;
    };
    return !text.empty() && text.size() <= kMaxGuidSize && std::ranges::all_of(text, allowed);
}

// Of an element of Metadata that the scanner understands.
std::optional<Identity::Kind> identityKind(const Element& element) {
    if (element.name == nameOf(Identity::Kind::Cpe)) return Identity::Kind::Cpe;
    if (element.name == nameOf(Identity::Kind::Purl)) return Identity::Kind::Purl;
    return std::nullopt;
}

// The text of an element without blanks around it, if it contains nothing else.
std::string_view textOf(const Element& element) {
    const Element* const text = element.firstChild;
    return text != nullptr && text->isText() && text->next == nullptr ? trimmed(text->text)
                                                                      : std::string_view();
}

bool isVariableIdentity(const Element& element) {
    return identityKind(element) && textOf(element).find("${") != std::string_view::npos;
}

// Parses the element of one signature.
class SignatureParser {
  public:
    SignatureParser(const Element& element, const Settings& settings, std::pmr::memory_resource& texts,
                    Diagnostics& diagnostics)
        : element_(element),
          settings_(settings),
          texts_(texts),
          diagnostics_(diagnostics),
          own_(element, settings, signature_, diagnostics) {}

    Signature parse() {
        signature_.line = element_.line;
        readHead();
        forEachElement(element_, diagnostics_, [this](const Element& part) { readPart(part); });
        if (signature_.detections.empty()) own_.finish();
        if (own_.conditions() + conditions_ > kMaxConditions)
            diagnostics_.problem(element_, "Signature has more than 200 conditions");
        return std::move(signature_);
    }

  private:
    // A child element of a signature. The parts stand in a fixed order.
    struct Part {
        std::string_view name;
        void (SignatureParser::*read)(const Element& part);
        bool repeatable = false;
    };

    void readHead() {
        constexpr std::array<AttributeName, 4> kNames = {
            {{"guid", true}, {"name", true}, {"revision"}, {"oncePer"}}};
        const auto values = valuesOf(element_, kNames, diagnostics_);
        signature_.guid = values[0].value_or(std::string_view());
        if (values[0] && !isGuid(*values[0]))
            diagnostics_.problem(element_, "guid " + quoted(*values[0]) +
                                               " is not made of 1 to 128 letters, digits and .:_{}-");
        if (values[1]) signature_.name = parseTemplate(element_, "name", *values[1], diagnostics_);
        signature_.oncePerInstallation = values[3].has_value();
        if (values[3] && *values[3] != "installation")
            diagnostics_.problem(element_, "oncePer " + quoted(*values[3]) + " is not installation");
    }

    void readPart(const Element& part) {
        static constexpr std::array<Part, 6> kParts = {{
            {"Metadata", &SignatureParser::readMetadata},
            {"Preset", &SignatureParser::readPreset, true},
            {"Each", &SignatureParser::readOwn},
            {"Match", &SignatureParser::readOwn},
            {"Output", &SignatureParser::readOwn},
            {"Detection", &SignatureParser::readDetection, true},
        }};
        const auto* const found = std::ranges::find(kParts, part.name, &Part::name);
        const auto position = static_cast<std::size_t>(found - kParts.begin());
        if (found == kParts.end() || position < nextPart_) {
            reportMisplaced(element_, part, diagnostics_);
            return;
        }
        nextPart_ = found->repeatable ? position : position + 1;
        (this->*found->read)(part);
    }

    void readMetadata(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), diagnostics_);
        for (const Element* child = part.firstChild; child != nullptr; child = child->next) {
            if (identityKind(*child)) readIdentity(*child);
        }
        const std::optional<std::string> xml = innerXml(part, isVariableIdentity);
        if (!xml) {
            diagnostics_.problem(part, "Metadata has a name that is not ASCII");
        } else if (xml->size() > kMaxMetadataSize) {
            diagnostics_.problem(part, "Metadata of more than 1 MiB");
        } else if (!xml->empty()) {
            auto* const copy = static_cast<char*>(texts_.allocate(xml->size(), 1));
            std::copy(xml->begin(), xml->end(), copy);
            signature_.metadata = {copy, xml->size()};
        }
    }

    void readIdentity(const Element& element) {
        const std::size_t before = diagnostics_.problems.size();
        Identity identity{*identityKind(element),
                          parseTemplate(element, element.name, textOf(element), diagnostics_)};
        if (diagnostics_.problems.size() > before) return;
        if (const std::optional<std::string> problem = problemOf(identity))
            diagnostics_.problem(element,
                                 std::string(element.name) + " " + quoted(textOf(element)) + " " + *problem);
        if (signature_.identities.size() == kMaxIdentities)
            diagnostics_.problem(element, "more than 16 identities");
        if (isVariableIdentity(element)) signature_.identities.push_back(identity);
    }

    void readPreset(const Element& part) {
        constexpr std::array<AttributeName, 2> kNames = {{{"name", true}, {"default"}}};
        const auto [name, fallback] = valuesOf(part, kNames, diagnostics_);
        requireNoChildren(part, diagnostics_);
        if (!name) return;
        if (name->empty() || name->find_first_of("${}") != std::string_view::npos)
            diagnostics_.problem(part, "name " + quoted(*name) + " cannot name a variable");
        if (name->starts_with("quorvis."))
            diagnostics_.problem(part, "name " + quoted(*name) + " belongs to the scanner");
        const auto sameName = [&wanted = *name](const Preset& preset) { return preset.name == wanted; };
        if (std::ranges::any_of(signature_.presets, sameName))
            diagnostics_.problem(part, "Preset " + quoted(*name) + " is declared twice");
        signature_.presets.push_back({*name, fallback});
    }

    void readOwn(const Element& part) { own_.read(part); }

    void readDetection(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), diagnostics_);
        if (own_.begun()) diagnostics_.problem(part, "Detection stands beside Each, Match or Output");
        if (signature_.detections.size() == kMaxDetections)
            diagnostics_.problem(part, "more than 64 Detection elements");
        DetectionParser detection(part, settings_, signature_, diagnostics_);
        forEachElement(part, diagnostics_, [&](const Element& child) { detection.read(child); });
        detection.finish();
        conditions_ += detection.conditions();
    }

    const Element& element_;
    const Settings& settings_;
    std::pmr::memory_resource& texts_;
    Diagnostics& diagnostics_;
    Signature signature_;
    DetectionParser own_;       // of a signature without Detection elements
    std::size_t nextPart_ = 0;  // position of the first part that is still allowed
    std::size_t conditions_ = 0;
};

// Collects the signatures of a document.
class Visitor : public ElementVisitor {
  public:
    Visitor(const std::string& path, const DocumentText& document, const Settings& settings,
            SignatureFile& file)
        : path_(path), document_(document), settings_(settings), file_(file) {}

    void onRoot(const Element& root) override {
        Diagnostics diagnostics;
        if (root.name != "Signatures") {
            diagnostics.problem(root, "the root is " + quoted(root.name) + ", not Signatures");
        }
        for (const ElementAttribute& attribute : root.attributes) {
            // These associate the document with its schema.
            if (attribute.name.starts_with("xmlns") || attribute.name.starts_with("xsi:")) continue;
            reportUnknownAttribute(root, attribute.name, diagnostics);
        }
        append(diagnostics.problems, file_.problems);
        root_.name = "Signatures";
    }

    void onChild(const Element& child) override {
        if (++children_ > kMaxChildren)
            throw TooManyElements{"more than 200000 elements and texts in Signatures"};
        Diagnostics diagnostics;
        Signature signature;
        if (child.name != "Signature") {
            reportMisplaced(root_, child, diagnostics);
        } else if (++count_ > kMaxSignatures) {
            diagnostics.problem(child, "more than 100000 signatures");
        } else {
            signature = SignatureParser(child, settings_, *file_.texts, diagnostics).parse();
        }
        append(diagnostics.warnings, file_.warnings);
        if (diagnostics.problems.empty()) {
            for (Leaf& leaf : signature.leaves) leaf.number = leaves_++;
            file_.signatures.push_back(std::move(signature));
        } else if (settings_.evaluation.skipInvalid) {
            drop(diagnostics.problems.front(), signature);
        } else {
            append(diagnostics.problems, file_.problems);
        }
    }

    // "sig.xml:3:7: ..."
    std::string located(std::size_t line, std::size_t offset, const std::string& text) const {
        return path_ + ":" + std::to_string(line) + ":" + std::to_string(columnOf(offset)) + ": " + text;
    }

    // Adds an event with the number of dropped signatures that have no event of their own.
    void summarizeDropped() const {
        if (dropped_ <= kMaxProblems) return;
        file_.events.push_back({EventCode::Unsupported,
                                {},
                                std::to_string(dropped_ - kMaxProblems) + " more were dropped",
                                {},
                                {}});
    }

  private:
    void append(const std::vector<Diagnostic>& diagnostics, std::vector<std::string>& list) const {
        for (const Diagnostic& diagnostic : diagnostics) {
            if (list.size() == kMaxProblems) return;
            list.push_back(located(diagnostic.line, diagnostic.offset, diagnostic.text));
        }
    }

    // A line may be as long as the document, so columns are counted from the previous place in the same line.
    std::size_t columnOf(std::size_t offset) const {
        const bool sameLine =
            offset >= counted_ &&
            std::string_view(document_.bytes).substr(counted_, offset - counted_).find('\n') ==
                std::string_view::npos;
        column_ = sameLine && column_ > 0 && document_.utf8 ? column_ + columnsBetween(counted_, offset)
                                                            : columnIn(document_, offset);
        counted_ = offset;
        return column_;
    }
    std::size_t columnsBetween(std::size_t begin, std::size_t end) const {
        const auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; };
        return static_cast<std::size_t>(
            std::ranges::count_if(std::string_view(document_.bytes).substr(begin, end - begin), isStart));
    }

    void drop(const Diagnostic& diagnostic, const Signature& signature) {
        if (++dropped_ > kMaxProblems) return;
        file_.events.push_back({EventCode::Unsupported,
                                {},
                                located(diagnostic.line, diagnostic.offset, diagnostic.text),
                                std::string(signature.guid),
                                {}});
    }

    const std::string& path_;
    const DocumentText& document_;
    const Settings& settings_;
    SignatureFile& file_;
    Element root_;                     // only its name is set
    mutable std::size_t counted_ = 0;  // the offset of the previous place
    mutable std::size_t column_ = 0;
    std::size_t dropped_ = 0;
    std::size_t children_ = 0;
    std::size_t count_ = 0;
    std::uint32_t leaves_ = 0;
};

}  // namespace

SignatureFile readSignatureFile(const std::string& path, const Settings& settings) {
    return readSignatureFile(path, readDocument(path), settings);
}

SignatureFile readSignatureFile(const std::string& path, const DocumentText& document,
                                const Settings& settings) {
    SignatureFile file;
    if (!document.error.empty()) {
        file.problems.push_back(document.error);
        return file;
    }
    if (!document.utf8)
        file.events.push_back({EventCode::Encoding, path, "not UTF-8; read as ISO-8859-1", {}, {}});
    file.texts = std::make_unique<std::pmr::monotonic_buffer_resource>(kFirstBlockSize);
    file.signatures.reserve(std::min(document.bytes.size() / kMinTypicalSize + 1, kMaxSignatures));
    Visitor visitor(path, document, settings, file);
    if (const auto fault = readElements(document, "Metadata", *file.texts, visitor)) {
        const TextPlace place = placeIn(document, fault->offset);
        file.problems.push_back(visitor.located(place.line, fault->offset, fault->text));
    }
    visitor.summarizeDropped();
    if (!file.problems.empty()) file.signatures.clear();
    return file;
}

}  // namespace toolkit::quorvis
