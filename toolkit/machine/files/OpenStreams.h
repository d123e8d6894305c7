#pragma once

namespace toolkit {

// Opens /dev/null for each standard stream that the program was started without, so that no file opened later gets the
// descriptor of a standard stream. Must be called before any file is opened.
void openMissingStreams();

}  // namespace toolkit
