#pragma once

namespace toolkit {

// Opens /dev/null in the place of each standard stream that the program was started without, so that no file that it
// opens is taken for one. To be called before anything is opened.
void openMissingStreams();

}  // namespace toolkit
