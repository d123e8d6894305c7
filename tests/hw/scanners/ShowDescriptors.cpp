// Prints the numbers of the descriptors that it inherited, one per line.
#include <fcntl.h>

#include <iostream>

int main() {
    constexpr int beyondAnyTest = 10'000;
    for (int number = 0; number < beyondAnyTest; ++number) {
        if (fcntl(number, F_GETFD) != -1) std::cout << number << '\n';
    }
    return 0;
}
