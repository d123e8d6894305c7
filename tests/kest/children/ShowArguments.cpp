// Writes its arguments in brackets, one per line.
#include <cstdio>

int main(int count, char** arguments) {
    for (int i = 1; i < count; ++i) std::printf("[%s]\n", arguments[i]);
}
