// Exits with the status in the first argument.
#include <cstdlib>

int main(int, char** arguments) {
    return std::atoi(arguments[1]);
}
