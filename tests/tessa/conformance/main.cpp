// tessa_conformance SUITE EXCEPTIONS: reads every document of the public XML conformance suite that an XML 1.0 reader
// without external entities can judge. Fails if a document that is not well-formed is accepted, a well-formed one is
// refused, or a tree differs from the canonical form. The listed exceptions must still be exceptions.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/tessa/conformance/Catalogue.h"
#include "tests/tessa/conformance/Documents.h"

namespace tessa::conformance {
namespace {

bool declaresIt(const Case& each) {
    std::ifstream file(each.path);
    std::string declaration;
    std::getline(file, declaration, '>');
    return declaration.find(each.version) != std::string::npos;
}

// The reason why a case is not judged; empty if it is judged.
std::string whyNot(const Case& each) {
    if (each.type == "error") return "an error that a reader may tell or not";
    if (each.editions == "5") return "only of the fifth edition, whose names are others";
    if (each.version != "1.0" && !declaresIt(each))
        return "of another version, but without a declaration of it";
    if (each.type == "not-wf" && each.entities != "none") return "not well-formed in an external entity";
    return "";
}

// A document of a version other than 1.0 must be refused.
bool mustBeRead(const Case& each) {
    return each.type != "not-wf" && each.version == "1.0";
}

// The name and the category of each exception.
std::map<std::string, std::string> exceptionsIn(const std::string& path) {
    std::map<std::string, std::string> exceptions;
    std::string category;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            category = line;
        } else {
            exceptions[line] = category;
        }
    }
    return exceptions;
}

class Run {
  public:
    explicit Run(const std::string& exceptions) : exceptions_(exceptionsIn(exceptions)) {}

    void judge(const Case& each) {
        const std::string reason = whyNot(each);
        if (!reason.empty()) {
            ++counts_["not judged: " + reason];
            return;
        }
        const std::string wrong = deviation(each);
        const auto exception = exceptions_.find(each.id);
        if (exception != exceptions_.end()) {
            met_.insert(each.id);
            ++counts_["excepted: " + exception->second];
            if (wrong.empty()) tell(each, "is an exception, but as it should be");
        } else if (!wrong.empty()) {
            tell(each, wrong);
        }
    }

    // Whether no document failed.
    bool finish() {
        for (const auto& [id, category] : exceptions_) {
            if (met_.contains(id)) continue;
            std::cout << id << ": is an exception, but not in the suite\n";
            ++failures_;
        }
        for (const auto& [what, count] : counts_) std::cout << count << ' ' << what << '\n';
        std::cout << failures_ << " failures\n";
        return failures_ == 0;
    }

  private:
    // The difference between the result and the expected one; empty if there is none.
    std::string deviation(const Case& each) {
        const Reading whole = readDocument(each.path, 0, each.namespaces);
        const Reading pieces = readDocument(each.path, 1, each.namespaces);
        if (pieces.good != whole.good || (whole.good && pieces.text != whole.text))
            return "is read otherwise in blocks of one byte";
        const Reading withExpat = readWithExpat(each.path, each.namespaces);
        if (withExpat.good != whole.good || (whole.good && withExpat.text != whole.text))
            return "is read otherwise with Expat";
        ++counts_[mustBeRead(each) ? "well-formed" : "not well-formed, or of another version"];
        if (whole.good != mustBeRead(each))
            return whole.good ? "is read, but must be refused" : "is refused: " + whole.text;
        if (!whole.good || each.output.empty() || each.entities != "none") return "";
        ++counts_["well-formed and compared with the canonical form"];
        const std::string canonical = readDocument(each.output, 0, false).text;
        return whole.text == canonical ? "" : "is " + whole.text + ", not " + canonical;
    }

    void tell(const Case& each, const std::string& what) {
        std::cout << each.id << " (" << each.path << "): " << what << '\n';
        ++failures_;
    }

    std::map<std::string, std::string> exceptions_;
    std::set<std::string> met_;
    std::map<std::string, int> counts_;
    int failures_ = 0;
};

// A smaller number would mean that the suite has changed.
constexpr std::size_t kFewestCases = 2000;

int run(const std::filesystem::path& suite, const std::string& exceptions) {
    const std::vector<Case> cases = casesOf(suite);
    std::cout << cases.size() << " cases\n";
    if (cases.size() < kFewestCases) return 1;
    Run judged(exceptions);
    for (const Case& each : cases) judged.judge(each);
    return judged.finish() ? 0 : 1;
}

}  // namespace
}  // namespace tessa::conformance

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "tessa_conformance SUITE EXCEPTIONS\n";
        return 2;
    }
    return tessa::conformance::run(arguments[1], arguments[2]);
}
