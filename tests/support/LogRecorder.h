#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "include/zav.h"

namespace zavtest {

struct Message {
    int level;
    int component;
    std::string function;
    std::string text;

    bool operator==(const Message&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Message& message) {
    return stream << "level " << message.level << ", component " << message.component << ", "
                  << message.function << ": " << message.text;
}

// Records the messages of the library. Pass `callback` with the recorder's address as user data.
struct LogRecorder {
    static void callback(int level, int component, void* userData, const char* function,
                         const char* message) {
        static_cast<LogRecorder*>(userData)->messages.push_back({level, component, function, message});
    }

    // The texts of one function's messages, in order.
    std::vector<std::string> textsOf(const std::string& function) const {
        std::vector<std::string> texts;
        for (const Message& message : messages) {
            if (message.function == function) texts.push_back(message.text);
        }
        return texts;
    }

    std::vector<Message> messages;
};

}  // namespace zavtest
