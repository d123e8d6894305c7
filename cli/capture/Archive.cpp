#include "cli/capture/Archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

// libarchive needs a dozen other libraries, and loading them would delay every other command. So it is loaded here.
class ArchiveLibrary {
  public:
    ArchiveLibrary() : handle_(::dlopen(kName, RTLD_NOW | RTLD_LOCAL), ::dlclose) {
        if (!handle_)
            throw Failure(kExitFailed, fmt::format("archives need the library {}: {}", kName, ::dlerror()));
        find(newWriter, "archive_write_new");
        find(setFormat, "archive_write_set_format_pax_restricted");
        find(addGzip, "archive_write_add_filter_gzip");
        find(addZstd, "archive_write_add_filter_zstd");
        find(setLastBlock, "archive_write_set_bytes_in_last_block");
        find(open, "archive_write_open");
        find(writeHeader, "archive_write_header");
        find(writeData, "archive_write_data");
        find(close, "archive_write_close");
        find(freeWriter, "archive_write_free");
        find(errorText, "archive_error_string");
        find(newEntry, "archive_entry_new");
        find(freeEntry, "archive_entry_free");
        find(setPath, "archive_entry_set_pathname");
        find(setType, "archive_entry_set_filetype");
        find(setPermissions, "archive_entry_set_perm");
        find(setSize, "archive_entry_set_size");
        find(setTarget, "archive_entry_set_symlink");
        find(setTime, "archive_entry_set_mtime");
        find(setUser, "archive_entry_set_uid");
        find(setGroup, "archive_entry_set_gid");
    }

    decltype(&::archive_write_new) newWriter = nullptr;
    decltype(&::archive_write_set_format_pax_restricted) setFormat = nullptr;
    decltype(&::archive_write_add_filter_gzip) addGzip = nullptr;
    decltype(&::archive_write_add_filter_zstd) addZstd = nullptr;
    decltype(&::archive_write_set_bytes_in_last_block) setLastBlock = nullptr;
    decltype(&::archive_write_open) open = nullptr;
    decltype(&::archive_write_header) writeHeader = nullptr;
    decltype(&::archive_write_data) writeData = nullptr;
    decltype(&::archive_write_close) close = nullptr;
    decltype(&::archive_write_free) freeWriter = nullptr;
    decltype(&::archive_error_string) errorText = nullptr;
    decltype(&::archive_entry_new) newEntry = nullptr;
    decltype(&::archive_entry_free) freeEntry = nullptr;
    decltype(&::archive_entry_set_pathname) setPath = nullptr;
    decltype(&::archive_entry_set_filetype) setType = nullptr;
    decltype(&::archive_entry_set_perm) setPermissions = nullptr;
    decltype(&::archive_entry_set_size) setSize = nullptr;
    decltype(&::archive_entry_set_symlink) setTarget = nullptr;
    decltype(&::archive_entry_set_mtime) setTime = nullptr;
    decltype(&::archive_entry_set_uid) setUser = nullptr;
    decltype(&::archive_entry_set_gid) setGroup = nullptr;

  private:
    static constexpr const char* kName = "libarchive.so.13";

    template <typename Function>
    void find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(::dlsym(handle_.get(), name));
        if (function == nullptr)
            throw Failure(kExitFailed, fmt::format("{} has no function {}", kName, name));
    }

    std::unique_ptr<void, int (*)(void*)> handle_;
};

la_ssize_t append(::archive* /*archive*/, void* text, const void* bytes, std::size_t size) {
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

class Writer {
  public:
    Writer(const ArchiveLibrary& library, Compression compression)
        : library_(library), archive_(library.newWriter(), library.freeWriter) {
        require(library_.setFormat(archive_.get()));
        if (compression == Compression::Gzip) require(library_.addGzip(archive_.get()));
        if (compression == Compression::Zstd) require(library_.addZstd(archive_.get()));
        // Otherwise zeros follow the compressed data, which zstd refuses.
        require(library_.setLastBlock(archive_.get(), 1));
        require(library_.open(archive_.get(), &text_, nullptr, append, nullptr));
    }

    void add(const std::string& path, const RecordedFile& file) {
        const std::unique_ptr<::archive_entry, void (*)(::archive_entry*)> entry(library_.newEntry(),
                                                                                 library_.freeEntry);
        library_.setPath(entry.get(), path.c_str());
        library_.setPermissions(entry.get(), file.permissions);
        library_.setUser(entry.get(), file.user);
        library_.setGroup(entry.get(), file.group);
        library_.setTime(entry.get(), file.time, 0);
        switch (file.kind) {
            case RecordedFile::Kind::Directory:
                library_.setType(entry.get(), AE_IFDIR);
                break;
            case RecordedFile::Kind::Link:
                library_.setType(entry.get(), AE_IFLNK);
                library_.setTarget(entry.get(), file.content.c_str());
                break;
            case RecordedFile::Kind::File:
                library_.setType(entry.get(), AE_IFREG);
                library_.setSize(entry.get(), static_cast<la_int64_t>(file.content.size()));
                break;
        }
        require(library_.writeHeader(archive_.get(), entry.get()));
        if (file.kind == RecordedFile::Kind::File && !file.content.empty() &&
            library_.writeData(archive_.get(), file.content.data(), file.content.size()) !=
                static_cast<la_ssize_t>(file.content.size()))
            fail();
    }

    std::string finish() {
        require(library_.close(archive_.get()));
        return std::move(text_);
    }

  private:
    // A warning is about a path in an unusual encoding, which is stored as it is.
    void require(int status) {
        if (status != ARCHIVE_OK && status != ARCHIVE_WARN) fail();
    }
    [[noreturn]] void fail() {
        const char* const reason = library_.errorText(archive_.get());
        throw Failure(kExitFailed,
                      fmt::format("the archive cannot be made: {}", reason == nullptr ? "unknown" : reason));
    }

    const ArchiveLibrary& library_;
    std::string text_;
    std::unique_ptr<::archive, int (*)(::archive*)> archive_;
};

}  // namespace

std::optional<Compression> compressionOf(std::string_view fileName) {
    constexpr std::array<std::pair<std::string_view, Compression>, 5> kEnds{{{".tar", Compression::None},
                                                                             {".tar.gz", Compression::Gzip},
                                                                             {".tgz", Compression::Gzip},
                                                                             {".tar.zst", Compression::Zstd},
                                                                             {".tzst", Compression::Zstd}}};
    const std::string name = lowerCase(fileName);
    for (const auto& [end, compression] : kEnds) {
        if (name.ends_with(end)) return compression;
    }
    return std::nullopt;
}

std::string archiveOf(const RecordedFiles& files, Compression compression) {
    const ArchiveLibrary library;
    Writer writer(library, compression);
    for (const auto& [path, file] : files) writer.add(path, file);
    return writer.finish();
}

}  // namespace zavcli
