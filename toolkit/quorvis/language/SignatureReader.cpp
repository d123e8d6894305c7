#include "toolkit/quorvis/language/SignatureReader.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/formats/DocumentText.h"
#include "toolkit/quorvis/language/ElementReader.h"
#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/language/SignatureBuilder.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMostSignatures = 100'000;
constexpr std::size_t kMostChildren = 2 * kMostSignatures;
constexpr std::size_t kMostProblems = 1'000;
constexpr std::size_t kFirstTexts = std::size_t{256} << 10;
constexpr std::size_t kSmallestUsual = 200;  // bytes of a signature

class Visitor : public ElementVisitor {
  public:
    Visitor(const std::string& path, const DocumentText& document, const Settings& settings,
            SignatureFile& file)
        : path_(path), document_(document), settings_(settings), file_(file) {}

    void onRoot(const Element& root) override {
        Complaints complaints;
        if (root.name != "Signatures") {
            complaints.problem(root, "the root is " + quoted(root.name) + ", not Signatures");
        }
        for (const ElementAttribute& attribute : root.attributes) {
            // Those that tie the document to its schema.
            if (attribute.name.starts_with("xmlns") || attribute.name.starts_with("xsi:")) continue;
            complainOfUnknownAttribute(root, attribute.name, complaints);
        }
        tell(complaints.problems, file_.problems);
        root_.name = "Signatures";
    }

    void onChild(const Element& child) override {
        if (++children_ > kMostChildren)
            throw TooManyElements{"more than 200000 elements and texts in Signatures"};
        Complaints complaints;
        Signature signature;
        if (child.name != "Signature") {
            complainOfChild(root_, child, complaints);
        } else if (++count_ > kMostSignatures) {
            complaints.problem(child, "more than 100000 signatures");
        } else {
            signature = readSignature(child, settings_, *file_.texts, complaints);
        }
        tell(complaints.warnings, file_.warnings);
        if (complaints.problems.empty()) {
            for (Leaf& leaf : signature.leaves) leaf.number = leaves_++;
            file_.signatures.push_back(std::move(signature));
        } else if (settings_.evaluation.skipInvalid) {
            drop(complaints.problems.front(), signature);
        } else {
            tell(complaints.problems, file_.problems);
        }
    }

    // "sig.xml:3:7: ..."
    std::string told(std::size_t line, std::size_t offset, const std::string& text) const {
        return path_ + ":" + std::to_string(line) + ":" + std::to_string(columnOf(offset)) + ": " + text;
    }

    // Tells how many more were dropped than there are events for.
    void tellOfRest() const {
        if (dropped_ <= kMostProblems) return;
        file_.events.push_back({EventCode::Unsupported,
                                {},
                                std::to_string(dropped_ - kMostProblems) + " more were dropped",
                                {},
                                {}});
    }

  private:
    void tell(const std::vector<Complaint>& complaints, std::vector<std::string>& list) const {
        for (const Complaint& complaint : complaints) {
            if (list.size() == kMostProblems) return;
            list.push_back(told(complaint.line, complaint.offset, complaint.text));
        }
    }

    // A line may be as long as the document: what is before the latest place is not counted again.
    std::size_t columnOf(std::size_t offset) const {
        const bool further =
            offset >= counted_ &&
            std::string_view(document_.bytes).substr(counted_, offset - counted_).find('\n') ==
                std::string_view::npos;
        column_ = further && column_ > 0 && document_.utf8 ? column_ + columnsBetween(counted_, offset)
                                                           : columnIn(document_, offset);
        counted_ = offset;
        return column_;
    }
    std::size_t columnsBetween(std::size_t begin, std::size_t end) const {
        const auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; };
        return static_cast<std::size_t>(
            std::ranges::count_if(std::string_view(document_.bytes).substr(begin, end - begin), isStart));
    }

    void drop(const Complaint& complaint, const Signature& signature) {
        if (++dropped_ > kMostProblems) return;
        file_.events.push_back({EventCode::Unsupported,
                                {},
                                told(complaint.line, complaint.offset, complaint.text),
                                std::string(signature.guid),
                                {}});
    }

    const std::string& path_;
    const DocumentText& document_;
    const Settings& settings_;
    SignatureFile& file_;
    Element root_;                     // its name, for those that have no place in it
    mutable std::size_t counted_ = 0;  // the latest place that was told of
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
    file.texts = std::make_unique<std::pmr::monotonic_buffer_resource>(kFirstTexts);
    file.signatures.reserve(std::min(document.bytes.size() / kSmallestUsual + 1, kMostSignatures));
    Visitor visitor(path, document, settings, file);
    if (const auto fault = readElements(document, "Metadata", *file.texts, visitor)) {
        const TextPlace place = placeIn(document, fault->offset);
        file.problems.push_back(visitor.told(place.line, fault->offset, fault->text));
    }
    visitor.tellOfRest();
    if (!file.problems.empty()) file.signatures.clear();
    return file;
}

}  // namespace toolkit::quorvis
