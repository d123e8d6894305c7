#include "tessa/Pages.h"

namespace tessa {

void useLargePages(void* /*block*/, std::size_t /*size*/) {}

}  // namespace tessa
