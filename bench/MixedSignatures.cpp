#include "bench/MixedSignatures.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <array>
#include <fstream>

#include "bench/Words.h"

namespace zavbench {

namespace {

constexpr std::array<const char*, 4> kTops = {"/usr", "/opt", "/srv", "/home"};

struct Product {
    int number;
    std::string package;
    std::string top;
};

std::string package(const Product& product) {
    return fmt::format(
        "<Match><Package id=\"p\" name=\"{}\"/></Match>\n"
        "<Output><Variable name=\"version\" value=\"${{p.version}}\"/></Output>",
        product.package);
}

std::string packageOrCopy(const Product& product) {
    return fmt::format(
        "<Match><Any><Package id=\"v\" name=\"{0}-server\" atLeast=\"2\"/>\n"
        "<Glob id=\"v\" pattern=\"{1}/**/libproduct{2}.so.*\" kind=\"file\"/></Any></Match>\n"
        "<Output><Variable name=\"name\" value=\"${{v.name}}\"/></Output>",
        product.package, product.top, product.number);
}

std::string packageWithFile(const Product& product) {
    return fmt::format(
        "<Match><All><Package id=\"p\" name=\"product{0}\"/>\n"
        "<Glob id=\"g\" pattern=\"{1}/**/product{0}/*.conf\"/></All></Match>\n"
        "<Output><Variable name=\"path\" value=\"${{g.path}}\"/></Output>",
        product.number, product.top);
}

std::string fixedPath(const Product& product) {
    return fmt::format(
        "<Match><Any><File id=\"f\" path=\"/opt/product{0}/bin/product{0}\" kind=\"file\"/>\n"
        "<File id=\"f\" path=\"/usr/lib/product{0}/product{0}\" kind=\"file\"/></Any></Match>\n"
        "<Output><Variable name=\"path\" value=\"${{f.path}}\"/></Output>",
        product.number);
}

std::string eachRelease(const Product& product) {
    return fmt::format(
        "<Each><Glob id=\"r\" pattern=\"{1}/**/product{0}/release\" kind=\"file\"/></Each>\n"
        "<Match><Property id=\"v\" path=\"${{r.path}}\" format=\"shell\" key=\"VERSION\" "
        "atLeast=\"1.8\"/></Match>\n"
        "<Output><Variable name=\"version\" value=\"${{v.value}}\"/>"
        "<Variable name=\"home\" value=\"${{r.dir}}\"/></Output>",
        product.number, product.top);
}

std::string contentOfCopy(const Product& product) {
    return fmt::format(
        "<Match><All><Glob id=\"g\" pattern=\"{1}/**/product{0}.conf\" kind=\"file\"/>\n"
        "<Content id=\"c\" path=\"${{g.path}}\" regex=\"^port = ([0-9]+)$\" flags=\"m\">"
        "<Capture group=\"1\" name=\"port\"/></Content></All></Match>\n"
        "<Output><Variable name=\"port\" value=\"${{c.port}}\"/></Output>",
        product.number, product.top);
}

// Of every twenty signatures nine ask for a package, four for a package or a file, two for both, two for files of
// known paths, two for a property and one for the content of files.
std::string condition(const Product& product) {
    const int kind = product.number % 20;
    if (kind < 9) return package(product);
    if (kind < 13) return packageOrCopy(product);
    if (kind < 15) return packageWithFile(product);
    if (kind < 17) return fixedPath(product);
    return kind < 19 ? eachRelease(product) : contentOfCopy(product);
}

}  // namespace

void writeMixedSignatures(const std::string& path, int count, int present,
                          const std::vector<std::string>& packages) {
    std::ofstream out(path);
    Numbers numbers;
    out << "<Signatures>\n";
    for (int i = 0; i < count; ++i) {
        // Interleaves present and missing products.
        const bool there = i % (count / present) == 0;
        const Product product = {i,
                                 there ? packages[static_cast<std::size_t>(i) % packages.size()]
                                       : fmt::format("vendor-product{}", i),
                                 kTops.at(numbers.below(kTops.size()))};
        fmt::print(out,
                   "<Signature guid=\"{}\" name=\"Product {}\">\n"
                   "<Metadata><Publisher>The {} company</Publisher></Metadata>\n{}</Signature>\n",
                   identifier(i), i, words(numbers, 1, ""), condition(product));
    }
    out << "</Signatures>\n";
}

}  // namespace zavbench
