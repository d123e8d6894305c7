// What a matched signature tells about the product: which one it is, where it is, and how it came to the machine.
#pragma once

#include <string>

#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// What package managers know of a product.
enum class Packaging {
    Owned,      // a package manager of the system installed it
    NotOwned,   // no package manager of the system knows it
    Unreported  // the signature does not report it
};

struct ProductIdentity {
    std::string name;     // the identifier of the signature if the product has no name
    std::string version;  // empty if unknown, like all below
    std::string place;    // its path
    std::string publisher;
    std::string home;     // the address of its home page
    std::string cpe;      // CPE 2.3
    std::string purl;     // its package URL
    std::string package;  // the package that contains or is the product: a package URL, or its name
    Packaging packaging = Packaging::Unreported;
};

ProductIdentity identityOf(const MatchedSignature& match);

// Whether the result is a package of a programming language, such as one of npm. Signatures that list such packages
// report their package URL in the variable `purl`.
bool isLanguagePackage(const MatchedSignature& match);

// How the product came to the machine, in words for people: "deb bash", "npm", "none" or "unknown".
std::string packageText(const ProductIdentity& identity);

}  // namespace zavcli
