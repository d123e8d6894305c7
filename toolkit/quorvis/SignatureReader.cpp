#include "toolkit/quorvis/SignatureReader.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/DocumentText.h"
#include "toolkit/quorvis/ElementReader.h"
#include "toolkit/quorvis/ElementRules.h"
#include "toolkit/quorvis/SignatureBuilder.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMostSignatures = 100'000;
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
        return path_ + ":" + std::to_string(line) + ":" + std::to_string(columnIn(document_, offset)) + ": " +
               text;
    }

  private:
    void tell(const std::vector<Complaint>& complaints, std::vector<std::string>& list) const {
        for (const Complaint& complaint : complaints) {
            if (list.size() == kMostProblems) return;
            list.push_back(told(complaint.line, complaint.offset, complaint.text));
        }
    }

    void drop(const Complaint& complaint, const Signature& signature) const {
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
    Element root_;  // its name, for those that have no place in it
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
    if (!file.problems.empty()) file.signatures.clear();
    return file;
}

}  // namespace toolkit::quorvis
