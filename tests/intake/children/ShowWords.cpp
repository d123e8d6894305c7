// Shows the words of its command line, its own name included.
#include <cstdio>

int main(int count, char** words) {
    for (int i = 0; i < count; ++i) std::printf("<%s>\n", words[i]);
}
