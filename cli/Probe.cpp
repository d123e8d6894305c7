#include "cli/Probe.h"

namespace zavcli {

namespace {

class Learner : public Listener {
  public:
    explicit Learner(Listener& also) : also_(also) {
        probe.configured = true;
        probe.registered = true;
    }

    void hear(const Message& message) noexcept override {
        if (message.text.starts_with("Can't open file [")) probe.configured = false;
        if (message.text == "Exploiter not correctly registered") probe.registered = false;
        if (message.component == kHandle) {
            learn(probe.toolkit, message.text, "ZAV location [");
            learn(probe.workspace, message.text, "initialization successful [");
        }
        also_.hear(message);
    }

    Probe probe;

  private:
    static constexpr int kHandle = 1;

    static void learn(std::string& value, std::string_view text, std::string_view lead) {
        if (text.starts_with(lead) && text.ends_with(']'))
            value = text.substr(lead.size(), text.size() - lead.size() - 1);
    }

    Listener& also_;
};

}  // namespace

Probe probeLibrary(Listener& also) {
    Learner learner(also);
    const Library library(learner, std::nullopt);
    learner.probe.groups = library.groups();
    return learner.probe;
}

}  // namespace zavcli
