// Writes its arguments, each in brackets on a line of its own.
#include <cstdio>

int main(int count, char** arguments) {
    for (int i = 1; i < count; ++i) std::printf("[%s]\n", arguments[i]);
}
