// Hashes of texts and files.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace zavcli {

struct Hashes {
    std::string sha1;  // in lower-case hexadecimal digits, like all below
    std::string sha256;
};

// Takes bytes in pieces.
class Digest {
  public:
    Digest();
    ~Digest();
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;

    void add(std::string_view bytes);
    // REQUIRES: called once.
    Hashes finish();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// A UUID of version 5 (RFC 9562) in the name space of URLs: the same text always gives the same UUID.
std::string nameUuid(std::string_view text);

}  // namespace zavcli
