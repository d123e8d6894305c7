#include "toolkit/machine/FileText.h"

#include <sys/mman.h>
#include <sys/stat.h>

namespace toolkit {

FileText::FileText(const Root& root, const std::string& path) {
    const kest::Descriptor file = root.open(path);
    struct stat status {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0) return;
    if (S_ISREG(status.st_mode) && status.st_size > 0) {
        size_ = static_cast<std::size_t>(status.st_size);
        void* const start = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file.number(), 0);
        if (start != MAP_FAILED) {
            mapping_ = static_cast<const char*>(start);
            return;
        }
    }
    copy_ = root.read(path).value_or(std::string());  // some file systems cannot map
}

FileText::~FileText() {
    if (mapping_ != nullptr) munmap(const_cast<char*>(mapping_), size_);
}

}  // namespace toolkit
