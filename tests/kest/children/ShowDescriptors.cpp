// Writes its open descriptors in ascending order with what they refer to, without the numbers of pipes.
#include <dirent.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

int main() {
    std::map<int, std::string> targets;
    DIR* const directory = opendir("/proc/self/fd");
    while (const dirent* const entry = readdir(directory)) {
        const int number = std::atoi(entry->d_name);
        if (entry->d_name[0] == '.' || number == dirfd(directory)) continue;
        char target[PATH_MAX];
        const ssize_t length =
            readlink(("/proc/self/fd/" + std::to_string(number)).c_str(), target, sizeof target);
        if (length < 0) return 1;
        targets[number].assign(target, static_cast<std::size_t>(length));
    }
    closedir(directory);
    for (const auto& [number, target] : targets) {
        std::printf("%d %s\n", number, target.substr(0, target.find(":[")).c_str());
    }
}
