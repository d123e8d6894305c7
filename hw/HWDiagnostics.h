#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"
#include "intake/XMLParser.h"
#include "tessa/Node.h"

namespace zav {

// Logs why the tree of a scanner's output is refused and where the fault is. The messages that hosts match byte for byte
// give no location, and some faults have no such message. While this object exists, the context refers to it.
class HWDiagnostics {
  public:
    // REQUIRES: the arguments outlive this object.
    HWDiagnostics(ZAVHwCtx* context, const XMLParser& output, const std::wstring& path);
    ~HWDiagnostics() { context_->diagnostics = nullptr; }
    HWDiagnostics(const HWDiagnostics&) = delete;
    HWDiagnostics& operator=(const HWDiagnostics&) = delete;

    // Logs a description of the fault with the location of the node that is at fault.
    void report(const std::string& description, const tessa::Node* node) const;

  private:
    ZAVHwCtx* context_;
    const XMLParser& output_;
    const std::wstring& path_;
};

// A name or text of the output for use in messages.
std::string quotedText(const wchar_t* text);

}  // namespace zav
