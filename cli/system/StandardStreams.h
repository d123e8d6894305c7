// Standard input, output and error, in whatever state the parent process passed them on.
#pragma once

#include <string_view>

namespace zavcli {

// Opens a placeholder for each standard stream that is closed, so that no file that is opened later gets its number.
// Writing to a placeholder of standard output fails; one of standard error discards messages.
// REQUIRES: called before anything is opened.
void reserveStandardStreams();

// Throws Failure if standard output does not take all of the text.
void writeStandardOutput(std::string_view text);

// Writes the text to standard error. Never throws: a message that cannot be written must not end the work.
void writeStandardError(std::string_view text) noexcept;

// Whether standard error was open but did not take a message.
bool messagesWereLost();

// Writes all of the text. Returns false with errno set if the descriptor does not take it.
bool writeAll(int descriptor, std::string_view text) noexcept;

}  // namespace zavcli
