#pragma once

#include <algorithm>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <initializer_list>
#include <memory>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// The values of one instance of a group, all empty at first. They stand in the memory of the report that the instance
// belongs to.
class Instance {
  public:
    Instance(const Group& group, std::pmr::memory_resource& memory);

    // Sets a field; an empty or missing value leaves it unknown. Throws std::logic_error for a name that the
    // group does not have. Setting fields in the group's order is fastest.
    void set(std::string_view field, std::string_view value) { replace(indexOf(field), value); }
    void set(std::string_view field, std::same_as<bool> auto value) {
        refer(field, value ? "true" : "false");
    }
    void set(std::string_view field,
             std::integral auto value) requires(!std::same_as<decltype(value), bool> &&
                                                !std::same_as<decltype(value), char>) {
        set(field, std::to_string(value));
    }
    template <typename T>
    void set(std::string_view field, const std::optional<T>& value) {
        if (value) set(field, *value);
    }
    // Several values, joined with ";".
    void set(std::string_view field, const std::vector<std::string>& values);
    // Without a copy of the value, which lives as long as the report: see Report::keep().
    void refer(std::string_view field, std::string_view value) { values_[indexOf(field)] = value; }

    // A field's value so far.
    std::string get(std::string_view field) const { return std::string(values_[indexOf(field)]); }

    // Whether no field has a value.
    bool empty() const {
        return std::all_of(values_.begin(), values_.end(),
                           [](std::string_view value) { return value.empty(); });
    }

    // In the order of the group's fields.
    std::span<const std::string_view> values() const { return values_; }
    void replace(std::size_t index, std::string_view value);

  private:
    std::size_t indexOf(std::string_view field) const;

    const Group* group_;
    std::pmr::memory_resource* memory_;
    std::span<std::string_view> values_;
    mutable std::size_t next_ = 0;  // where the search for a field begins
};

// How gathering a group went. Of two that hold, the later one in this order counts.
enum class GroupState : std::uint8_t {
    Complete,       // what is not there does not exist
    NotApplicable,  // this machine, or this tree of one, cannot have it
    Unsupported,    // this scanner does not gather it
    Partial,        // there may be more than was found
    Unread,         // nothing could be read, so that nothing is known
};

// A group has more instances, or longer ones, than any machine.
class TooMuch : public std::exception {
  public:
    const char* what() const noexcept override { return "too much"; }
};

// What came of gathering one group. It takes no more than a stranger's files may cost: beyond kMostInstances, and
// beyond what memory these may need, adding to it throws TooMuch, and what it holds by then stays.
class Report {
  public:
    static constexpr std::size_t kMostInstances = 100'000;
    static constexpr std::size_t kMostBytes = std::size_t{64} << 20;  // of all values
    static constexpr std::size_t kLongestValue = std::size_t{64} << 10;

    explicit Report(const Group& group) : group_(&group), memory_(std::make_unique<Memory>()) {}

    const Group& group() const { return *group_; }

    // An instance that is not, or not yet, a part of the report.
    Instance blank() const { return Instance(*group_, *memory_); }
    // A new instance; the reference stays valid.
    Instance& add() {
        if (instances_.size() == kMostInstances) throw TooMuch();
        return instances_.emplace_back(*group_, *memory_);
    }
    // A new instance with its key set.
    Instance& add(std::string_view key) {
        Instance& instance = add();
        if (!group_->fields.empty()) instance.replace(0, key);
        return instance;
    }
    // Adds the one instance that the group has, as `fill` sets it, with these texts; none when it sets nothing. What it
    // has set when it throws is added as well.
    template <class Fill>
    void addOne(const Fill& fill,
                std::initializer_list<std::pair<std::string_view, std::string_view>> texts = {}) {
        Instance instance = blank();
        std::exception_ptr failure;
        try {
            fill(instance);
        } catch (...) {
            failure = std::current_exception();
        }
        if (!instance.empty()) {
            for (const auto& [field, text] : texts) instance.set(field, text);
            add() = instance;
        }
        if (failure) std::rethrow_exception(failure);
    }
    // Lets what values refer to live as long as the report.
    void keep(std::shared_ptr<const void> texts) { kept_.push_back(std::move(texts)); }

    // Something that belongs to the group could not be read; `reason` is one word ("permission", "timeout",
    // "dpkg-broken"). A group that turns out to have no instances is unread then. Of equal states the first reason stands.
    void partial(std::string_view reason) { settle(GroupState::Partial, reason); }
    // Nothing of the group could be read, whatever its instances say.
    void unread(std::string_view reason) { settle(GroupState::Unread, reason); }
    // This machine, or the scanned tree, has not what the group tells of.
    void notApplicable(std::string_view reason) { settle(GroupState::NotApplicable, reason); }
    void unsupported() { settle(GroupState::Unsupported, "unsupported"); }

    GroupState state() const {
        return state_ == GroupState::Partial && instances_.empty() ? GroupState::Unread : state_;
    }
    // Empty for a group that is complete.
    const std::string& reason() const { return reason_; }

    // Something to tell the person who reads the report.
    void warn(std::string text) { warnings_.push_back(std::move(text)); }
    const std::vector<std::string>& warnings() const { return warnings_; }

    // How long gathering took.
    void setElapsed(std::chrono::milliseconds elapsed) { elapsed_ = elapsed; }
    std::chrono::milliseconds elapsed() const { return elapsed_; }

    // Sorts the instances by their keys. Numbers in keys count as such, so cpu10 comes behind cpu9, unless
    // the key is bytewise.
    void sort();

    // Makes values that are longer than kLongestValue unknown, and takes away the last instances if all values are more
    // than kMostBytes; whether there was anything to do.
    bool trim();

    std::deque<Instance>& instances() { return instances_; }
    const std::deque<Instance>& instances() const { return instances_; }

  private:
    void settle(GroupState state, std::string_view reason) {
        if (state <= state_) return;
        state_ = state;
        reason_ = reason;
    }

    // Grows in blocks; what is asked of those counts.
    class Memory : public std::pmr::memory_resource {
        void* do_allocate(std::size_t size, std::size_t alignment) override;
        void do_deallocate(void*, std::size_t, std::size_t) override {}
        bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
            return this == &other;
        }

        static constexpr std::size_t kFirstBlock = std::size_t{16} << 10;
        std::pmr::monotonic_buffer_resource blocks_{kFirstBlock};
        std::size_t left_ = 4 * kMostBytes;
    };

    const Group* group_;
    std::unique_ptr<Memory> memory_;
    std::vector<std::shared_ptr<const void>> kept_;
    std::deque<Instance> instances_;
    GroupState state_ = GroupState::Complete;
    std::string reason_;
    std::vector<std::string> warnings_;
    std::chrono::milliseconds elapsed_{0};
};

// Whether `left` comes before `right` when the decimal numbers in them are compared by value.
bool naturallyBefore(std::string_view left, std::string_view right);

}  // namespace toolkit::quorvah
