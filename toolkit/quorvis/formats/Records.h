// Finds values in documents of nested objects and arrays while they are parsed. No tree of a document is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

// A step from an object to one of its members, or from an array to one of its elements.
struct KeyStep {
    std::string name;  // of the member, or the number of the element
    bool any = false;  // all members or elements
};
using KeySteps = std::vector<KeyStep>;

// Parses names separated by dots, where "*" stands for all members or elements ("packages.*.name"), or a JSON pointer
// ("/packages/0/name"), which has no wildcards. "." has no steps: it is the value itself.
KeySteps parseKeySteps(std::string_view key);

// A value of a record.
struct RecordKey {
    KeySteps steps;           // from the record
    bool recordName = false;  // the name of the record itself: the last step to it
    bool required = true;     // a record without it is left out
};

constexpr std::size_t kMaxRecordKeys = 33;

struct RecordRequest {
    KeySteps each;  // from the document to its records; no steps: the document is the only record
    std::vector<RecordKey> keys;  // REQUIRES: 1 to kMaxRecordKeys. The first one may have wildcards
    bool all = false;             // all values of the first key count instead of the last one
    bool emptyClears = false;     // an empty value of the first key removes the values before it
    bool firstCounts = false;     // a document of one record ends once each key has a value
    std::size_t limit = 0;        // of the values of the first key
};

struct Record {
    std::vector<std::string> items;                  // the values of the first key
    std::vector<std::optional<std::string>> values;  // of the other keys
};

struct Records {
    std::vector<Record> records;  // in document order; each has an item and its required values
    bool tooMany = false;         // there are more than the limit
    bool tooLarge = false;        // the document exceeds a limit of its reader
    std::string problem;          // why the document could not be read completely; empty if it could
};

// Receives a document value by value.
class RecordCollector {
  public:
    // REQUIRES: the request outlives this.
    RecordCollector(const RecordRequest& request, const ProgressCheck& checkProgress);

    // The name of the next member.
    void key(std::string_view name);
    // A text, number or boolean; none for null.
    void scalar(std::optional<std::string_view> text);
    // Begins an object or array. False, with a problem, if the document is nested too deeply.
    bool open(bool array);
    void close();

    // Whether the next value is or may contain a wanted value.
    bool wantsNext() const;
    // Whether a further member of the open object is or may contain a wanted value.
    bool wantsMembers() const { return !open_.empty() && open_.back().isWanted(); }

    // Whether the rest of the document does not matter.
    bool isDone() const;

    // Only the first problem counts.
    void setProblem(std::string problem);
    Records takeRecords();

  private:
    // Where a value is, as seen from the document.
    struct Place {
        bool onWay = false;        // on the way to records, or a record
        std::uint64_t onKeys = 0;  // a bit for each key: within a record, on the way to this value or at it
    };
    struct Container {
        Place place;
        bool array = false;
        bool record = false;
        std::size_t index = 0;

        bool isWanted() const { return place.onWay || place.onKeys != 0; }
    };

    Place nextPlace() const;
    std::string nextName() const;
    bool isRecord(const Place& place) const { return place.onWay && open_.size() == request_.each.size(); }
    void beginRecord();
    void endRecord();
    void keep(const Place& place, std::optional<std::string_view> text);
    void keepItem(std::optional<std::string_view> text);
    void passValue();

    const RecordRequest& request_;
    const ProgressCheck& checkProgress_;
    bool manyRecords_;
    bool manyItems_;
    std::vector<Container> open_;
    std::string name_;  // of the next member
    Record record_;
    std::size_t itemCount_ = 0;
    Records found_;
};

// The formats: properties, ini, systemd, shell, json, yaml, toml, headers, manifest.
bool isPropertyFormat(std::string_view format);
// Whether a document of this format consists of nested objects and arrays: json, yaml, toml.
bool isTreeFormat(std::string_view format);
// Whether it consists of sections or paragraphs: ini, systemd, headers, manifest.
bool hasSections(std::string_view format);

// Reads a document of any of these formats except shell. REQUIRES: isPropertyFormat(format).
Records readRecords(std::string_view format, std::string_view text, const RecordRequest& request,
                    const ProgressCheck& checkProgress = {});

Records readJsonRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress = {});
// A document of several is read like all others. An alias of an object or array is not followed: that is a problem if a
// wanted value may be in it.
Records readYamlRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress = {});
// Numbers and dates have the text that is in the document.
Records readTomlRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress = {});

// The root is an object of sections, and each section an object of texts. The section "" holds the keys before the first
// section. Quotes around a value are removed.
Records readIniRecords(std::string_view text, const RecordRequest& request,
                       const ProgressCheck& checkProgress = {});
// A unit file of systemd, with the same structure.
Records readUnitRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress = {});
// A properties file of Java: an object of texts.
Records readPropertiesRecords(std::string_view text, const RecordRequest& request,
                              const ProgressCheck& checkProgress = {});
// Paragraphs of header fields, separated by empty lines: an array of objects. The names of fields are passed in lower case.
// A line that begins with a blank continues the field.
Records readHeaderRecords(std::string_view text, const RecordRequest& request,
                          const ProgressCheck& checkProgress = {});
// The same in the manifest of a Java archive, where lines are broken at any character.
Records readManifestRecords(std::string_view text, const RecordRequest& request,
                            const ProgressCheck& checkProgress = {});

}  // namespace toolkit::quorvis
