/* bare_walk DIRECTORY: opens every directory of a tree and reads all names in it without using them. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

struct Entry {
    uint64_t inode;
    int64_t next;
    uint16_t length;
    uint8_t type;
    char name[];
};

enum { kBlock = 32 << 10, kDirectory = 4, kMaxDepth = 64 };

static char blocks[kMaxDepth][kBlock];

static int walk(int parent, const char* name, int depth) {
    if (depth == kMaxDepth) return 1;
    const int directory = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0) return 1;
    int failed = 0;
    long count;
    while ((count = syscall(SYS_getdents64, directory, blocks[depth], kBlock)) > 0) {
        for (long at = 0; at < count;) {
            const struct Entry* entry = (const struct Entry*)(blocks[depth] + at);
            at += entry->length;
            if (entry->type != kDirectory || strcmp(entry->name, ".") == 0 || strcmp(entry->name, "..") == 0)
                continue;
            failed |= walk(directory, entry->name, depth + 1);
        }
    }
    close(directory);
    return failed;
}

int main(int argc, char** argv) {
    return argc == 2 ? walk(AT_FDCWD, argv[1], 0) : 2;
}
