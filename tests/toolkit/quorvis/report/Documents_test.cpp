#include <gtest/gtest.h>

#include <algorithm>

#include "toolkit/quorvis/report/Documents.h"

using toolkit::quorvis::appendMatch;
using toolkit::quorvis::Event;
using toolkit::quorvis::EventCode;
using toolkit::quorvis::EventList;
using toolkit::quorvis::lineOf;
using toolkit::quorvis::Match;
using toolkit::quorvis::MatchElements;
using toolkit::quorvis::OutputLimit;
using toolkit::quorvis::warningsDocument;
using toolkit::quorvis::writeOutputDocument;

namespace {

Event eventOf(EventCode code, const std::string& guid, const std::string& text = "text") {
    return {code, {}, text, guid, {}};
}

std::string outputDocument(const MatchElements& matches, bool complete) {
    std::string document;
    writeOutputDocument(matches, complete, [&document](std::string_view piece) { document += piece; });
    return document;
}

}  // namespace

TEST(OutputDocument, WritesOneLinePerMatch) {
    const Match matches[] = {
        {"G-1", "First", "<P>x</P>", {{"package", "/db", "bash", "5"}, {"file", "/f", "", ""}}, {{"v", "1"}}},
        {"G-2", "Second", "", {}, {}},
    };
    MatchElements elements;
    for (const Match& match : matches) {
        std::string element;
        appendMatch(element, match);
        elements.add(element);
    }
    EXPECT_EQ(outputDocument(elements, true),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<MatchedSignatures language=\"1\" complete=\"true\">\n"
              "<MatchedSignature guid=\"G-1\" name=\"First\"><Metadata><P>x</P>"
              "<Evidence kind=\"package\" source=\"/db\" name=\"bash\" version=\"5\"/>"
              "<Evidence kind=\"file\" source=\"/f\"/><MatchedName>First</MatchedName></Metadata>"
              "<Variable name=\"v\" value=\"1\"/></MatchedSignature>\n"
              "<MatchedSignature guid=\"G-2\" "
              "name=\"Second\"><Metadata><MatchedName>Second</MatchedName></Metadata>"
              "</MatchedSignature>\n"
              "</MatchedSignatures>\n");
    EXPECT_NE(outputDocument({}, false).find("complete=\"false\""), std::string::npos);
}

TEST(OutputDocument, KeepsTheOrderOfElementsOfAnySize) {
    MatchElements elements;
    std::string all;
    for (const std::size_t size : {10UL, 200'000UL, 100'000UL, 3UL, 2'000'000UL, 1UL}) {
        const std::string element(size, static_cast<char>('a' + size % 23));
        elements.add(element);
        all += element;
    }
    EXPECT_NE(outputDocument(elements, true).find(all), std::string::npos);
    EXPECT_LT(elements.blocks().size(), 6U);
}

TEST(OutputDocument, RepeatsTheNameInTheMetadata) {
    std::string document;
    appendMatch(document, {"G", "<A>\xE2\x82\xAC", "<Name>n</Name>", {}, {}});
    EXPECT_EQ(document,
              "<MatchedSignature guid=\"G\" name=\"&lt;A&gt;&#8364;\"><Metadata><Name>n</Name>"
              "<MatchedName>&lt;A&gt;&#8364;</MatchedName></Metadata></MatchedSignature>\n");
    document.clear();
    appendMatch(document, {"G", "", "", {}, {}});
    EXPECT_EQ(document, "<MatchedSignature guid=\"G\" name=\"\"><Metadata></Metadata></MatchedSignature>\n");
}

TEST(OutputDocument, EscapesValuesAsAscii) {
    const std::pair<std::string, const char*> cases[] = {
        {"a<b>&\"c\"", "a&lt;b&gt;&amp;&quot;c&quot;"},       {"a\tb\nc\rd", "a&#9;b&#10;c&#13;d"},
        {"\xE2\x82\xAC\xF0\x9F\x98\x80", "&#8364;&#128512;"}, {"M\xFCller", "M&#252;ller"},
        {std::string("a\0b\x01", 4) + "c\x1B", "abc"},        {"\xEF\xBF\xBFx", "x"},
    };
    for (const auto& [value, written] : cases) {
        const Match match{"G", "N", {}, {}, {{"v", value}}};
        std::string document;
        appendMatch(document, match);
        EXPECT_NE(document.find(std::string("value=\"") + written + "\"/>"), std::string::npos) << document;
    }
}

TEST(WarningsDocument, ListsEveryUndecidedSignature) {
    EventList events;
    for (int i = 0; i < 3000; ++i) {
        const std::string guid = "g" + std::to_string(i);
        events.add({EventCode::Permission, "/x", "No permission", guid, ""});
        events.add({EventCode::Unresolved, "", "unknown", guid, ""});
    }
    const std::vector<EventList::Entry> entries = events.entries();
    const auto undecided = std::ranges::count_if(
        entries, [](const EventList::Entry& entry) { return entry.event.code == EventCode::Unresolved; });
    EXPECT_EQ(undecided, 3000);
    EXPECT_EQ(entries.size(), 3000U + 1000U + 1U) << "1,000 of the other events and a summary";
    EXPECT_EQ(entries.back().count, 2000U);
}

TEST(WarningsDocument, ListsEachEvent) {
    EventList events;
    events.add({EventCode::Permission, "/etc/<x>", "cannot be opened", "G", "f"});
    events.add({EventCode::Invalid, "", "wrong", "", ""});
    events.add({EventCode::RemoteSkipped, "/net", "not entered", "", ""});
    events.add({EventCode::Parse, "/x", "damaged", "", "", true});
    EXPECT_EQ(
        warningsDocument(events),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Events>\n"
        "<Event code=\"permission\" severity=\"warning\" guid=\"G\" leaf=\"f\" path=\"/etc/&lt;x&gt;\" "
        "count=\"1\">cannot be opened</Event>\n"
        "<Event code=\"invalid\" severity=\"error\" count=\"1\">wrong</Event>\n"
        "<Event code=\"remote-skipped\" severity=\"info\" path=\"/net\" count=\"1\">not entered</Event>\n"
        "<Event code=\"parse\" severity=\"warning\" path=\"/x\" scope=\"file\" count=\"1\">damaged</Event>\n"
        "</Events>\n");
}

TEST(EventList, CountsMoreThanTwentyOfOneKind) {
    EventList events;
    for (int i = 0; i < 50; ++i) events.add(eventOf(EventCode::Loop, "G-1"));
    for (int i = 0; i < 3; ++i) events.add(eventOf(EventCode::Loop, "G-2"));
    const std::vector<EventList::Entry> entries = events.entries();
    ASSERT_EQ(entries.size(), 24U);
    EXPECT_EQ(entries.back().event.code, EventCode::Loop);
    EXPECT_EQ(entries.back().event.guid, "G-1");
    EXPECT_EQ(entries.back().count, 30U);
}

TEST(EventList, CountsMoreThanAThousand) {
    EventList events;
    for (int i = 0; i < 5000; ++i) events.add(eventOf(EventCode::Permission, "G-" + std::to_string(i)));
    const std::vector<EventList::Entry> entries = events.entries();
    ASSERT_EQ(entries.size(), 1001U);
    EXPECT_EQ(entries.back().count, 4000U);
}

TEST(EventList, KeepsEachPrivatePlaceOfAllSignaturesOnceAndCountsMoreThanAThousand) {
    EventList events;
    for (int i = 0; i < 2; ++i) {
        for (int place = 0; place < 900; ++place)
            events.add({EventCode::Permission, "/" + std::to_string(place), "private", "", ""});
    }
    EXPECT_EQ(events.entries().size(), 900U);
    for (int place = 900; place < 1100; ++place)
        events.add({EventCode::Permission, "/" + std::to_string(place), "private", "", ""});
    Event more{EventCode::Permission, "", "more such events were left out", "", ""};
    more.count = 7'000;
    events.add(more);
    for (int i = 0; i < 1000; ++i) events.add(eventOf(EventCode::Io, "G-" + std::to_string(i)));
    const std::vector<EventList::Entry> entries = events.entries();
    ASSERT_EQ(entries.size(), 2001U) << "they do not displace other events";
    EXPECT_EQ(entries.back().event.text, "more such events were left out");
    EXPECT_EQ(entries.back().count, 7'100U);
}

TEST(EventList, UndecidedSignaturesShareALine) {
    EventList events;
    const auto add = [&events](const std::string& guid, const std::string& because) {
        Event event{EventCode::Unresolved, "", "unknown", guid, ""};
        event.because = because;
        events.add(event);
    };
    for (const char* guid : {"A", "B", "C", "D", "E", "F", "G"}) add(guid, "permission");
    events.add({EventCode::Permission, "/x", "private", "", ""});
    add("H", "io");
    EXPECT_EQ(linesOf(events),
              (std::vector<std::string>{
                  "warning: permission: /x: private",
                  "warning: unresolved: unknown, because of permission (7) [A, B, C, D, E, ...]",
                  "warning: unresolved: unknown, because of io [H]"}));
    EXPECT_NE(warningsDocument(events).find("guid=\"G\" because=\"permission\" count=\"1\">unknown"),
              std::string::npos);
}

TEST(EventList, KnowsWhetherALimitWasReached) {
    for (const EventCode code : {EventCode::LimitDepth, EventCode::LimitEntries, EventCode::LimitBytes,
                                 EventCode::LimitMatches, EventCode::Deadline}) {
        EventList events;
        EXPECT_FALSE(events.reachedLimit());
        events.add(std::vector<Event>{eventOf(EventCode::Io, ""), eventOf(code, "")});
        EXPECT_TRUE(events.reachedLimit());
    }
    EventList events;
    for (const EventCode code : {EventCode::Permission, EventCode::Io, EventCode::Loop, EventCode::Denied,
                                 EventCode::Unresolved, EventCode::Invalid}) {
        events.add(eventOf(code, ""));
    }
    EXPECT_FALSE(events.reachedLimit());
}

TEST(EventList, WritesAnEventAsOneLine) {
    EXPECT_EQ(lineOf({{EventCode::LimitDepth, "/a\nb", "12 levels", "G", "f"}, 3}),
              "warning: limit-depth: /a?b: 12 levels (3) [G, f]");
    EXPECT_EQ(lineOf({{EventCode::Encoding, "", "odd", "", ""}, 1}), "info: encoding: odd");
}

TEST(OutputLimit, BoundsTheTreeOfAReader) {
    OutputLimit limit;
    const std::string large(std::size_t{1} << 20, 'x');
    std::size_t admitted = 0;
    while (limit.admit(large)) ++admitted;
    EXPECT_GE(admitted, 100U);
    EXPECT_LE(admitted, 256U);
    EXPECT_TRUE(limit.admit(""));
}

TEST(OutputLimit, CountsTheNodesOfSmallElements) {
    OutputLimit limit;
    std::string small;
    for (int i = 0; i < 1'000; ++i) small += "<a/>";
    std::size_t admitted = 0;
    while (limit.admit(small)) ++admitted;
    EXPECT_LE(admitted, 8'000U);
}
