#include "cli/formats/SignatureListWriter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"

namespace zavcli {
namespace {

const std::vector<SignatureEntry> kEntries{{"zav.n", "nginx", "NGINX"}, {"zav.b", "Bash ${v}", ""}};

TEST(SignatureListWriter, TableIsSortedByName) {
    EXPECT_EQ(
        "Name       Publisher  GUID\n"
        "Bash ${v}             zav.b\n"
        "nginx      NGINX      zav.n\n",
        signatureTable(kEntries, {}));
}

TEST(SignatureListWriter, JsonAndCsvKeepTheOrderOfTheFiles) {
    using Json = nlohmann::ordered_json;
    EXPECT_EQ(Json::array({{{"guid", "zav.n"}, {"name", "nginx"}, {"publisher", "NGINX"}},
                           {{"guid", "zav.b"}, {"name", "Bash ${v}"}}}),
              Json::parse(signatureJson(kEntries)).at("signatures"));
    const std::vector<zavtest::CsvRecord> records{
        {"guid", "name", "publisher"}, {"zav.n", "nginx", "NGINX"}, {"zav.b", "Bash ${v}", ""}};
    EXPECT_EQ(records, zavtest::readCsv(signatureCsv(kEntries, CsvFormulas::Protected)));
}

TEST(SignatureListWriter, FormulasInCsvAreProtected) {
    const std::vector<SignatureEntry> entries{{"g", "=cmd()", ""}};
    EXPECT_EQ("guid,name,publisher\r\ng,'=cmd(),\r\n", signatureCsv(entries, CsvFormulas::Protected));
    EXPECT_EQ("guid,name,publisher\r\ng,=cmd(),\r\n", signatureCsv(entries, CsvFormulas::Raw));
}

}  // namespace
}  // namespace zavcli
