// Creates links to a directory in place of the output file and the warnings file.
#include <unistd.h>

int main(int, char** arguments) {
    return symlink("/", arguments[4]) | symlink("/", arguments[6]);
}
