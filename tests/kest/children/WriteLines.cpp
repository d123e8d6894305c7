// Writes as many lines as the first argument says: "line 0", "line 1" and so on.
#include <cstdio>
#include <cstdlib>

int main(int, char** arguments) {
    const int count = std::atoi(arguments[1]);
    for (int i = 0; i < count; ++i) std::printf("line %d\n", i);
}
