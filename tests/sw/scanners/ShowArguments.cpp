// Prints its arguments, one a line, its own path first.
#include <iostream>

int main(int count, char** arguments) {
    for (int i = 0; i < count; ++i) std::cout << arguments[i] << '\n';
    return 0;
}
