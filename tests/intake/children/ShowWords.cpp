// Writes its arguments, including the name of the program.
#include <cstdio>

int main(int count, char** words) {
    for (int i = 0; i < count; ++i) std::printf("<%s>\n", words[i]);
}
