#include "tests/sw/Evaluation.h"

namespace swtest {

Evaluation::Evaluation(const std::string& toolkitName, const std::string& tempName)
    : Toolkit(toolkitName), LibraryHost(path(), tempName) {
    EXPECT_EQ(ZAV_sw_init(handle(), zavtest::LogRecorder::callback, &log_, &context_), 0);
    log_.messages.clear();
}

Evaluation::~Evaluation() {
    if (context_ != nullptr) close();
}

void Evaluation::close() {
    EXPECT_EQ(ZAV_sw_free(std::exchange(context_, nullptr)), 0);
    closeHandle();
}

int Evaluation::returnCode() const {
    int code = 0;
    EXPECT_EQ(ZAV_sw_get_returncode(context_, &code), 0);
    return code;
}

std::vector<ZAVSwResult*> Evaluation::results() const {
    ZAVSwResult** all = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_sw_get_results(context_, &all, &count), 0);
    return {all, all + count};
}

WideTexts Evaluation::guids() const {
    WideTexts guids;
    for (ZAVSwResult* const result : results()) {
        const wchar_t* guid = L"";
        EXPECT_EQ(ZAV_sw_get_guid(context_, result, &guid), 0);
        guids.emplace_back(guid);
    }
    return guids;
}

std::wstring Evaluation::metadata(ZAVSwResult* result) const {
    const wchar_t* text = L"";
    EXPECT_EQ(ZAV_sw_get_metadata(context_, result, &text), 0);
    return text;
}

Variables Evaluation::variables(ZAVSwResult* result) const {
    const wchar_t** names = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_sw_get_variables(context_, result, &names, &count), 0);
    Variables variables;
    for (int i = 0; i < count; ++i) {
        const wchar_t* value = L"";
        EXPECT_EQ(ZAV_sw_get_value(context_, result, names[i], &value), 0);
        variables.emplace_back(names[i], value);
    }
    return variables;
}

WideTexts Evaluation::warnings() const {
    const wchar_t** texts = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_sw_get_warnings(context_, &texts, &count), 0);
    return {texts, texts + count};
}

ZAVSwResult* Evaluation::find(const wchar_t* guid) const {
    ZAVSwResult* result = nullptr;
    const int code = ZAV_sw_find_result_by_guid(context_, guid, &result);
    EXPECT_EQ(code, result == nullptr ? 210 : 0);
    return result;
}

Texts Evaluation::takePrinted() {
    const std::string before = "STDOUT data: [";
    Texts lines;
    for (const std::string& text : takeTextsOf("SW_ExecuteScanner()")) {
        if (text.starts_with(before))
            lines.push_back(text.substr(before.size(), text.size() - before.size() - 1));
    }
    return lines;
}

}  // namespace swtest
