#include "cli/sbom/Digest.h"

#include <fmt/format.h>
#include <nettle/sha1.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <iterator>

namespace zavcli {

struct Digest::State {
    sha1_ctx sha1;
    sha256_ctx sha256;
};

namespace {

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

template <std::size_t Size>
std::string hexadecimal(const std::array<std::uint8_t, Size>& bytes) {
    std::string digits;
    for (const std::uint8_t byte : bytes) fmt::format_to(std::back_inserter(digits), "{:02x}", byte);
    return digits;
}

}  // namespace

Digest::Digest() : state_(std::make_unique<State>()) {
    sha1_init(&state_->sha1);
    sha256_init(&state_->sha256);
}

Digest::~Digest() = default;

void Digest::add(std::string_view bytes) {
    sha1_update(&state_->sha1, bytes.size(), bytesOf(bytes));
    sha256_update(&state_->sha256, bytes.size(), bytesOf(bytes));
}

Hashes Digest::finish() {
    std::array<std::uint8_t, SHA1_DIGEST_SIZE> sha1{};
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> sha256{};
    sha1_digest(&state_->sha1, sha1.size(), sha1.data());
    sha256_digest(&state_->sha256, sha256.size(), sha256.data());
    return {hexadecimal(sha1), hexadecimal(sha256)};
}

std::string nameUuid(std::string_view text) {
    constexpr std::array<std::uint8_t, 16> kUrls{0x6b, 0xa7, 0xb8, 0x11, 0x9d, 0xad, 0x11, 0xd1,
                                                 0x80, 0xb4, 0x00, 0xc0, 0x4f, 0xd4, 0x30, 0xc8};
    sha1_ctx context;
    sha1_init(&context);
    sha1_update(&context, kUrls.size(), kUrls.data());
    sha1_update(&context, text.size(), bytesOf(text));
    std::array<std::uint8_t, kUrls.size()> bytes{};
    sha1_digest(&context, bytes.size(), bytes.data());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | 0x50);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80);
    std::string uuid = hexadecimal(bytes);
    for (const std::size_t at : {20U, 16U, 12U, 8U}) uuid.insert(at, 1, '-');
    return uuid;
}

}  // namespace zavcli
