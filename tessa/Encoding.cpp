#include "tessa/Encoding.h"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace tessa {

namespace {

constexpr int kMalformed = -1;
constexpr int kLongest = 3;

class Converter {
  public:
    explicit Converter(const char* encoding) : handle_(iconv_open("UCS-4LE", encoding)) {}
    ~Converter() {
        if (valid()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool valid() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    // The code point of exactly these bytes, or kMalformed.
    int convert(const char* bytes, int length) const {
        char input[kLongest];
        std::memcpy(input, bytes, static_cast<std::size_t>(length));
        char* in = input;
        auto inLeft = static_cast<std::size_t>(length);
        unsigned char output[8];
        char* out = reinterpret_cast<char*>(output);
        std::size_t outLeft = sizeof output;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        const std::size_t result = iconv(handle_, &in, &inLeft, &out, &outLeft);
        if (result == static_cast<std::size_t>(-1) || inLeft != 0 || outLeft != sizeof output - 4)
            return kMalformed;
        return output[0] | output[1] << 8 | output[2] << 16 | output[3] << 24;
    }

  private:
    iconv_t handle_;
};

// How a byte that is no character by itself begins one: minus the length of the characters that it leads, as
// Expat wants it, or kMalformed.
int sequenceOf(const Converter& converter, char lead) {
    for (int second = 0x21; second <= 0xFF; ++second) {
        const char two[] = {lead, static_cast<char>(second)};
        if (converter.convert(two, 2) != kMalformed) return -2;
    }
    for (int second = 0xA1; second <= 0xFE; ++second) {
        const char three[] = {lead, static_cast<char>(second), '\xA1'};
        if (converter.convert(three, 3) != kMalformed) return -3;
    }
    return kMalformed;
}

struct SystemEncoding {
    explicit SystemEncoding(const char* name) : converter(name) {}

    Converter converter;
    int lengths[256] = {};
};

int XMLCALL convertSequence(void* data, const char* bytes) {
    const auto* const encoding = static_cast<const SystemEncoding*>(data);
    return encoding->converter.convert(bytes, encoding->lengths[static_cast<unsigned char>(*bytes)]);
}

void XMLCALL release(void* data) {
    delete static_cast<SystemEncoding*>(data);
}

}  // namespace

bool useSystemEncoding(const char* name, XML_Encoding& encoding) {
    auto system = std::make_unique<SystemEncoding>(name);
    if (!system->converter.valid()) {
        if (errno == ENOMEM) throw std::bad_alloc();
        return false;
    }
    for (int byte = 0; byte < 256; ++byte) {
        const char single = static_cast<char>(byte);
        const int codePoint = system->converter.convert(&single, 1);
        encoding.map[byte] = codePoint != kMalformed ? codePoint : sequenceOf(system->converter, single);
        system->lengths[byte] = -encoding.map[byte];
    }
    encoding.data = system.release();
    encoding.convert = convertSequence;
    encoding.release = release;
    return true;
}

}  // namespace tessa
