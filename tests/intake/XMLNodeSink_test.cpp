#include "intake/XMLNodeSink.h"

#include <gtest/gtest.h>

#include "tests/support/LogRecorder.h"
#include "tests/tessa/Reading.h"

namespace zav::test {
namespace {

using zavtest::LogRecorder;
using zavtest::Message;

// A node that counts its deletions.
struct CountedNode : tessa::Node {
    explicit CountedNode(int& deletions) : deletions_(deletions) {}
    ~CountedNode() override { ++deletions_; }
    CountedNode(const CountedNode&) = delete;
    CountedNode& operator=(const CountedNode&) = delete;

    int type() const override { return kText; }
    const wchar_t* text() const override { return L""; }
    const char* utf8() const override { return ""; }
    const kest::String& name() const override { return name_; }
    int getChildren(const tessa::NodeList** /*children*/) const override { return -1; }
    const tessa::StringMap* attributes() const override { return nullptr; }
    std::shared_ptr<tessa::TextStore> shareTexts() const override { return nullptr; }

  private:
    int& deletions_;
    kest::String name_;
};

TEST(XMLNodeSink, WarningsAndErrorsAreLoggedWithTheirLines) {
    LogRecorder recorder;
    ZAVlog log(3, LogRecorder::callback, &recorder);
    XMLNodeSink sink(&log);
    EXPECT_EQ(sink.onWarning(kest::String(L"odd thing"), 7), 0);
    EXPECT_EQ(sink.onError(kest::String(L"bad thing"), 0), 0);
    EXPECT_EQ(sink.onCriticalError(kest::String(L"bad thing"), 2147483647), 0);
    EXPECT_EQ(sink.onError(kest::String(L""), -1), 0);
    EXPECT_EQ(sink.onWarning(kest::String(L"100% %s"), 1), 0);
    EXPECT_EQ(recorder.messages, (std::vector<Message>{
                                     {2, 3, "XML_parser", "Warning in line 7: odd thing"},
                                     {0, 3, "XML_parser", "Error in line 0: bad thing"},
                                     {0, 3, "XML_parser", "Error in line 2147483647: bad thing"},
                                     {0, 3, "XML_parser", "Error in line -1: "},
                                     {2, 3, "XML_parser", "Warning in line 1: 100% %s"},
                                 }));
}

TEST(XMLNodeSink, ErrorsOfBothKindsAreLoggedInTheSameWay) {
    LogRecorder recorder;
    ZAVlog log(4, LogRecorder::callback, &recorder);
    XMLNodeSink sink(&log);
    sink.onError(kest::String(L"x"), 3);
    sink.onCriticalError(kest::String(L"x"), 3);
    ASSERT_EQ(recorder.messages.size(), 2U);
    EXPECT_EQ(recorder.messages[0], recorder.messages[1]);
}

TEST(XMLNodeSink, WithoutALogDiagnosticsAreDropped) {
    XMLNodeSink sink(nullptr);
    EXPECT_EQ(sink.onWarning(kest::String(L"x"), 1), 0);
    EXPECT_EQ(sink.onError(kest::String(L"x"), 1), 0);
    EXPECT_EQ(sink.onCriticalError(kest::String(L"x"), 1), 0);
}

TEST(XMLNodeSink, ServesAReaderThroughItsBaseClass) {
    LogRecorder recorder;
    ZAVlog log(3, LogRecorder::callback, &recorder);
    const std::unique_ptr<tessa::NodeSink> sink = std::make_unique<XMLNodeSink>(&log);
    sink->onWarning(kest::String(L"x"), 1);
    sink->onError(kest::String(L"x"), 1);
    sink->onCriticalError(kest::String(L"x"), 1);
    EXPECT_EQ(recorder.messages.size(), 3U);
}

TEST(XMLNodeSink, TreeIsDeletedWithTheSink) {
    int deletions = 0;
    {
        XMLNodeSink sink(nullptr);
        EXPECT_EQ(sink.root(), nullptr);
        auto* const node = new CountedNode(deletions);
        EXPECT_EQ(sink.onNodeTree(node), 0);
        EXPECT_EQ(sink.root(), node);
        EXPECT_EQ(deletions, 0);
    }
    EXPECT_EQ(deletions, 1);
}

TEST(XMLNodeSink, LaterTreeReplacesAnEarlierOneWithoutDeletingIt) {
    int deletions = 0;
    const auto earlier = std::make_unique<CountedNode>(deletions);
    {
        XMLNodeSink sink(nullptr);
        sink.onNodeTree(earlier.get());
        auto* const later = new CountedNode(deletions);
        EXPECT_EQ(sink.onNodeTree(later), 0);
        EXPECT_EQ(sink.root(), later);
    }
    EXPECT_EQ(deletions, 1);
}

}  // namespace
}  // namespace zav::test
