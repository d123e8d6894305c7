// Standard input, output and error, whatever state they were handed over in.
#pragma once

#include <string_view>

namespace zavcli {

// Gives each of the three that is closed something in its place, so that no file which is opened later is taken for one
// of them: writing to standard output goes on to fail, and messages go nowhere. To be called before anything is opened.
void occupyStandardStreams();

// Writes the text to standard error. It never throws: a message that cannot be written must not end the work.
void writeStandardError(std::string_view text) noexcept;

// Whether a standard error that was there did not take a message.
bool messagesWereLost();

// Writes all of the text; false, with errno set, when the descriptor does not take it.
bool writeAll(int descriptor, std::string_view text) noexcept;

}  // namespace zavcli
