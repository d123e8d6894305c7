// Ends with the exit status that the first argument names.
#include <cstdlib>

int main(int, char** arguments) {
    return std::atoi(arguments[1]);
}
