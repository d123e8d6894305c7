// Prints its path and its arguments, one per line.
#include <iostream>

int main(int count, char** arguments) {
    for (int i = 0; i < count; ++i) std::cout << arguments[i] << '\n';
    return 0;
}
