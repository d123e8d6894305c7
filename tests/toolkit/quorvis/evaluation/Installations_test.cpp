#include "toolkit/quorvis/evaluation/Installations.h"

#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

TEST(InstallationOf, IsTheDirectoryAboveItsUsualParts) {
    const struct {
        const char* path;
        const char* installation;
    } cases[] = {
        {"/usr/bin/x", "/"},
        {"/bin/x", "/"},
        {"/usr/lib/x86_64-linux-gnu/libx.so.1", "/"},
        {"/lib64/libx.so.1", "/"},
        {"/srv/image/usr/bin/x", "/srv/image"},
        {"/srv/image/lib/x86_64-linux-gnu/libx.so.1", "/srv/image"},
        {"/srv/usr", "/srv"},
        {"/usr/local/bin/x", "/usr/local"},
        {"/usr/local/lib/libx.so", "/usr/local"},
        {"/opt/x-1.2/sbin/x", "/opt/x-1.2"},
        {"/opt/x-1.2/x", "/opt/x-1.2"},
        {"/usr/lib/x/15/bin/x", "/usr/lib/x/15"},
        {"/srv/app/libx.so", "/srv/app"},
        {"/srv/app/library/x", "/srv/app/library"},
        {"/x", "/"},
        {"", ""},
    };
    for (const auto& [path, installation] : cases) EXPECT_EQ(installation, installationOf(path)) << path;
}

class OncePerInstallation : public Evaluation {
  protected:
    // The paths of the matches, in order. The version of a file is its content.
    std::vector<std::string> found(const std::string& attribute = R"( oncePer="installation")",
                                   const std::string& more = "") {
        std::vector<std::string> paths;
        for (const Match& match : evaluate(
                 R"(<Signature guid="g" name="n")" + attribute +
                 R"(><Detection><Each><Glob id="f" pattern="/{usr,opt/*}/{bin/app,lib/libapp.so}"/></Each>)"
                 R"(<Match><Optional><Content id="v" path="${f.path}" regex="[0-9.]+"/></Optional></Match>)"
                 R"(<Output><Variable name="version" value="${v.match}"/>)"
                 R"(<Variable name="path" value="${f.path}"/></Output></Detection>)" +
                 more + "</Signature>"))
            paths.push_back(match.variables.back().second);
        return paths;
    }
    using Paths = std::vector<std::string>;
};

TEST_F(OncePerInstallation, FilesOfOneVersionAreOneMatch) {
    for (const char* const file :
         {"usr/bin/app", "usr/lib/libapp.so", "opt/a/bin/app", "opt/a/lib/libapp.so"})
        tree_.write(file, "1.2");
    EXPECT_EQ((Paths{"/opt/a/bin/app", "/usr/bin/app"}), found());
    EXPECT_EQ(4U, found("").size()) << "without the attribute";
}

TEST_F(OncePerInstallation, OtherVersionsAreOtherMatches) {
    tree_.write("usr/bin/app", "1.2");
    tree_.write("usr/lib/libapp.so", "1.3");
    EXPECT_EQ((Paths{"/usr/bin/app", "/usr/lib/libapp.so"}), found());
}

TEST_F(OncePerInstallation, AMatchWithoutVersionAddsNothingToOneWithAVersion) {
    tree_.write("usr/bin/app", "1.2");
    tree_.write("usr/lib/libapp.so", "none");
    tree_.write("opt/a/lib/libapp.so", "none");
    EXPECT_EQ((Paths{"/opt/a/lib/libapp.so", "/usr/bin/app"}), found());
}

TEST_F(OncePerInstallation, AFileThatNoPackageOwnsIsAnotherMatch) {
    install("app", "1.2");
    tree_.write("usr/bin/app", "");
    tree_.write("usr/lib/libapp.so", "");
    tree_.write("var/lib/dpkg/info/app.list", "/.\n/usr\n/usr/bin\n/usr/bin/app\n");
    const std::vector<Match> matches = evaluate(
        R"(<Signature guid="g" name="n" oncePer="installation"><Each><Glob id="f" pattern="/usr/*/*app*"/></Each>)"
        R"(<Output><Variable name="package" value="${f.packageName}"/></Output></Signature>)");
    ASSERT_EQ(2U, matches.size());
    EXPECT_EQ((Variables{{"package", "app"}}), matches[0].variables);
    EXPECT_EQ((Variables{{"package", ""}}), matches[1].variables);
}

TEST_F(OncePerInstallation, PackagesOfOneVersionAreOneMatch) {
    install("app", "1.2");
    install("app-common", "1.2");
    const std::string byPackage =
        R"(<Detection><Each><Package id="p" nameRegex="^app"/></Each><Output>)"
        R"(<Variable name="version" value="${p.version}"/><Variable name="package" value="${p.name}"/>)"
        R"(</Output></Detection>)";
    EXPECT_EQ((Paths{"app"}), found(R"( oncePer="installation")", byPackage));
    EXPECT_EQ((Paths{"app", "app-common"}), found("", byPackage));
}

}  // namespace
}  // namespace toolkit::quorvis
