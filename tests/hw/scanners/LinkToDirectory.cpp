// Creates a link to a directory in place of the output file.
#include <unistd.h>

int main(int, char** arguments) {
    return symlink("/", arguments[4]);
}
