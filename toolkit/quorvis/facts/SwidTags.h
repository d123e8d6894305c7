#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// An organisation that a tag names.
struct SwidEntity {
    std::string regid;
    std::string role;  // one or more words: "tagCreator softwareCreator"

    bool hasRole(std::string_view wanted) const;
};

// The content of a software identification tag (ISO/IEC 19770-2).
struct SwidTag {
    std::string path;
    std::string tagId;
    std::string name;
    std::string version;
    std::string tagVersion;
    bool patch = false;
    bool corpus = false;  // describes an installer, not an installed product
    std::vector<SwidEntity> entities;
};

// None when the text is not a valid tag; `problem` says why.
std::optional<SwidTag> parseSwidTag(std::string_view text, std::string& problem,
                                    const ProgressCheck& checkProgress = {});

// The SWID tags of the scanned machine, read once.
class SwidTags {
  public:
    // REQUIRES: all arguments outlive this.
    SwidTags(Files& files, const Settings& settings, LookupBudget& budget)
        : files_(files), settings_(settings), budget_(budget) {}

    // Sorted by path.
    const std::vector<SwidTag>& tags();

    // Why some tags could not be read.
    const std::vector<Event>& events() const { return events_; }
    bool incomplete() const { return incomplete_; }

  private:
    void readWithinLimits();
    void read();
    std::vector<std::string> namesIn(const std::string& directory);
    void readDirectory(const std::string& directory, bool andBelow);
    void readTag(const std::string& path);
    void note(EventCode code, const std::string& path, std::string text);

    Files& files_;
    const Settings& settings_;
    LookupBudget& budget_;
    bool isRead_ = false;
    std::vector<SwidTag> tags_;
    std::vector<Event> events_;
    bool incomplete_ = false;
    std::size_t held_ = 0;  // approximate bytes of tags_
};

}  // namespace toolkit::quorvis
