#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"
#include "intake/XMLParser.h"
#include "tessa/Node.h"

namespace zav {

// Tells why the tree of a scanner's output is refused, and where: the messages that hosts know do not say where, and
// some faults have none. The parser of the tree finds it in the context while it lives.
class HWFaults {
  public:
    // REQUIRES: all three outlive this.
    HWFaults(ZAVHwCtx* context, const XMLParser& output, const std::wstring& path);
    ~HWFaults() { context_->faults = nullptr; }
    HWFaults(const HWFaults&) = delete;
    HWFaults& operator=(const HWFaults&) = delete;

    // What is wrong, and the first node of the tree of which that is said.
    void tell(const std::string& what, const tessa::Node* node) const;

  private:
    ZAVHwCtx* context_;
    const XMLParser& output_;
    const std::wstring& path_;
};

// A name or text of the output in messages.
std::string quotedText(const wchar_t* text);

}  // namespace zav
