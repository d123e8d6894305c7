#include <zav.h>

#include <iostream>

int main() {
    ZAVCtx* zav = nullptr;
    int messages = 0;
    const auto count = [](int, int, void* userData, const char*, const char*) {
        ++*static_cast<int*>(userData);
    };
    int code = ZAV_init("consumer", count, &messages, nullptr, L"/none", &zav);
    if (code == ZAV_SUCCESS) code = ZAV_free(zav);
    if (code == ZAV_SUCCESS && messages > 0) std::cout << "messages came\n";
    return code;
}
