#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <initializer_list>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvah/report/Group.h"
#include "toolkit/quorvah/report/Instance.h"

namespace toolkit::quorvah {

// The outcome of gathering a group. If several states are set, the last one in this order applies.
enum class GroupState : std::uint8_t {
    Complete,       // all that exists was found
    NotApplicable,  // this machine or tree cannot have the group
    Unsupported,    // this scanner does not gather the group
    Partial,        // there may be more than was found
    Unread,         // nothing could be read
};

// A group exceeds the limits of GroupData.
class TooMuch : public std::exception {
  public:
    const char* what() const noexcept override { return "too much"; }
};

// The data of one group: its instances, and how gathering went. Because a scanned tree may be hostile, the size is
// limited: adding an instance beyond kMaxInstances, or exceeding the memory for values, throws TooMuch and leaves the
// earlier data as it is.
class GroupData {
  public:
    static constexpr std::size_t kMaxInstances = 100'000;
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;  // of all values together
    static constexpr std::size_t kMaxValueSize = std::size_t{64} << 10;

    explicit GroupData(const Group& group) : group_(&group), memory_(std::make_unique<Memory>()) {}

    const Group& group() const { return *group_; }

    // An instance that is not one of instances().
    Instance blank() const { return Instance(*group_, *memory_); }
    // Adds an instance. The reference stays valid.
    Instance& add() {
        if (instances_.size() == kMaxInstances) throw TooMuch();
        return instances_.emplace_back(*group_, *memory_);
    }
    // Adds an instance with this key.
    Instance& add(std::string_view key) {
        Instance& instance = add();
        if (!group_->fields.empty()) instance.replace(0, key);
        return instance;
    }
    // Adds the only instance of a group: calls `fill` and then sets the fields in `texts`. Adds nothing if `fill` sets
    // nothing. If `fill` throws, the fields set so far are added and the exception is rethrown.
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
    // Keeps alive what values refer to.
    void keep(std::shared_ptr<const void> texts) { kept_.push_back(std::move(texts)); }

    // Part of the group could not be read. A group without instances is unread then. `reason` is one word
    // ("permission", "timeout", "dpkg-broken"); the first reason for the final state is kept.
    void partial(std::string_view reason) { setState(GroupState::Partial, reason); }
    // The same, for a reason that explains those which were given before.
    void partialBecause(std::string_view reason) {
        if (state_ > GroupState::Partial) return;
        state_ = GroupState::Partial;
        reason_ = reason;
    }
    // Nothing of the group could be read, even if there are instances.
    void unread(std::string_view reason) { setState(GroupState::Unread, reason); }
    void notApplicable(std::string_view reason) { setState(GroupState::NotApplicable, reason); }
    void unsupported() { setState(GroupState::Unsupported, "unsupported"); }

    GroupState state() const {
        return state_ == GroupState::Partial && instances_.empty() ? GroupState::Unread : state_;
    }
    // Empty if the group is complete.
    const std::string& reason() const { return reason_; }

    // Adds a message for the user.
    void warn(std::string text) { warnings_.push_back(std::move(text)); }
    const std::vector<std::string>& warnings() const { return warnings_; }

    // The time that gathering took.
    void setElapsed(std::chrono::milliseconds elapsed) { elapsed_ = elapsed; }
    std::chrono::milliseconds elapsed() const { return elapsed_; }

    // Sorts the instances by their keys, with naturallyBefore() unless the key is bytewise.
    void sort();

    // Empties values longer than kMaxValueSize, and removes the last instances if all values exceed kMaxBytes. Returns
    // whether it changed anything.
    bool trim();

    // Empties values that do not have the form of their field's type, with a warning per field.
    void dropMalformed();

    std::deque<Instance>& instances() { return instances_; }
    const std::deque<Instance>& instances() const { return instances_; }

  private:
    void setState(GroupState state, std::string_view reason) {
        if (state <= state_) return;
        state_ = state;
        reason_ = reason;
    }

    // Grows in blocks. The limit applies to what callers request, not to the blocks.
    class Memory : public std::pmr::memory_resource {
        void* do_allocate(std::size_t size, std::size_t alignment) override;
        void do_deallocate(void*, std::size_t, std::size_t) override {}
        bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
            return this == &other;
        }

        static constexpr std::size_t kFirstBlock = std::size_t{16} << 10;
        std::pmr::monotonic_buffer_resource blocks_{kFirstBlock};
        std::size_t left_ = 4 * kMaxBytes;
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

}  // namespace toolkit::quorvah
