// Groups that behave badly in one way each, and a function that gathers them.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/scan/GroupGatherer.h"

namespace toolkit::quorvah::fakes {

using std::chrono::milliseconds;

inline constexpr schema::Field kFields[] = {{"DeviceID"}, {"Value"}};

inline void quick(GatheringContext& /*context*/, GroupData& data) {
    data.add("one").set("Value", 1);
    data.add("two");
}
inline void large(GatheringContext& /*context*/, GroupData& data) {
    for (int i = 0; i < 3000; ++i) data.add(std::to_string(i)).set("Value", std::string(100, 'x'));
}
inline void hang(GatheringContext& /*context*/, GroupData& data) {
    data.add("never seen");
    for (;;) pause();
}
inline void ignoreSignalsAndHang(GatheringContext& context, GroupData& data) {
    signal(SIGTERM, SIG_IGN);
    hang(context, data);
}
inline void crash(GatheringContext& /*context*/, GroupData& data) {
    data.add("never seen");
    raise(SIGKILL);
}
inline void leave(GatheringContext& /*context*/, GroupData& /*data*/) {
    _exit(0);
}
inline void fail(GatheringContext& /*context*/, GroupData& data) {
    data.add("kept");
    throw std::runtime_error("no such luck");
}
inline void unreadable(GatheringContext& context, GroupData& data) {
    data.add("kept").set("Value", context.root().readLine("/secret"));
}
inline void talk(GatheringContext& /*context*/, GroupData& data) {
    std::printf("noise\n");
    std::fflush(stdout);
    data.add("silent");
}

inline void plain(GatheringContext& context, GroupData& data) {
    context.checkTime();
    data.add(std::to_string(getpid()));
}
inline void endless(GatheringContext& context, GroupData& data) {
    data.add("kept");
    for (;;) context.checkTime();
}

inline void searchForever(GatheringContext& context, GroupData& data) {
    data.add("kept");
    for (;;) context.root().exists("/no/such/file");
}
inline void searchForeverInOneInstance(GatheringContext& context, GroupData& data) {
    data.addOne([&context](Instance& instance) {
        instance.set("Value", "kept");
        for (;;) context.root().list("/");
    });
}
inline void readHugeLine(GatheringContext& context, GroupData& data) {
    data.add("kept").set("Value", context.root().readLine("/line"));
}
inline void addForever(GatheringContext& /*context*/, GroupData& data) {
    for (;;) data.add("kept");
}
inline void writeForever(GatheringContext& /*context*/, GroupData& data) {
    for (;;) data.add("kept").set("Value", std::string(60'000, 'x'));
}

inline void giveTwoReasons(GatheringContext& /*context*/, GroupData& data) {
    data.partial("broken");
    data.partial("other");
}
inline void runOutOfMemory(GatheringContext& /*context*/, GroupData& /*data*/) {
    throw std::bad_alloc();
}
inline void findNothing(GatheringContext& /*context*/, GroupData& /*data*/) {}

inline constexpr const char* kSource[] = {"/no/such/source"};

inline void fillMemory(GatheringContext& /*context*/, GroupData& data) {
    for (;;) data.add(std::string(std::size_t{1} << 20, 'x'));
}
inline void reachOut(GatheringContext& /*context*/, GroupData& data) {
    char program[] = "/bin/true";
    char* const arguments[] = {program, nullptr};
    const auto tell = [&data](const char* what, bool refused) { data.add(what).set("Value", refused); };
    tell("program", execv(program, arguments) != 0 && errno == EPERM);
    tell("stream", socket(AF_INET, SOCK_STREAM, 0) < 0 && errno == EPERM);
    tell("local", socket(AF_UNIX, SOCK_STREAM, 0) < 0 && errno == EPERM);
    const int datagrams = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in somebody{};
    somebody.sin_family = AF_INET;
    somebody.sin_port = htons(9);
    somebody.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* const address = reinterpret_cast<const sockaddr*>(&somebody);
    tell("datagram",
         datagrams >= 0 && sendto(datagrams, "x", 1, 0, address, sizeof somebody) < 0 && errno == EPERM);
    tell("connection", connect(datagrams, address, sizeof somebody) < 0 && errno == EPERM);
    tell("signal", kill(getppid(), 0) < 0 && errno == EPERM);
    const int kernel = socket(AF_NETLINK, SOCK_RAW, 0);
    tell("kernel", kernel >= 0 && send(kernel, "x", 1, 0) == 1);
    const pid_t child = fork();
    if (child == 0) _exit(0);
    tell("child", child > 0 && waitpid(child, nullptr, 0) == child);
}

inline constexpr const char* kQuickXml =
    "<Quick><DeviceID>one</DeviceID><Value>1</Value></Quick><Quick><DeviceID>two</DeviceID><Value/></Quick>";

inline constexpr Group kQuick{.displayName = "Quick", .xmlName = "Quick", .fields = kFields, .gather = quick};
inline constexpr Group kLarge{.displayName = "Large", .xmlName = "Large", .fields = kFields, .gather = large};
inline constexpr Group kHang{.displayName = "Hang", .xmlName = "Hang", .fields = kFields, .gather = hang};
inline constexpr Group kIgnoringSignals{.displayName = "IgnoringSignals",
                                        .xmlName = "IgnoringSignals",
                                        .fields = kFields,
                                        .gather = ignoreSignalsAndHang};
inline constexpr Group kCrash{.displayName = "Crash", .xmlName = "Crash", .fields = kFields, .gather = crash};
inline constexpr Group kLeave{.displayName = "Leave", .xmlName = "Leave", .fields = kFields, .gather = leave};
inline constexpr Group kFail{.displayName = "Fail", .xmlName = "Fail", .fields = kFields, .gather = fail};
inline constexpr Group kUnreadable{
    .displayName = "Unreadable", .xmlName = "Unreadable", .fields = kFields, .gather = unreadable};
inline constexpr Group kEndlessInstances{
    .displayName = "Hungry", .xmlName = "Hungry", .fields = kFields, .gather = fillMemory};
inline constexpr Group kReachOut{
    .displayName = "Reach Out", .xmlName = "ReachOut", .fields = kFields, .gather = reachOut};
inline constexpr Group kTalk{.displayName = "Talk", .xmlName = "Talk", .fields = kFields, .gather = talk};
inline constexpr Group kPlain{.displayName = "Plain",
                              .xmlName = "Plain",
                              .fields = kFields,
                              .gather = plain,
                              .readsPlainFilesOnly = true};
inline constexpr Group kEndless{.displayName = "Endless",
                                .xmlName = "Endless",
                                .fields = kFields,
                                .gather = endless,
                                .readsPlainFilesOnly = true};
inline constexpr Group kUnsupported{.displayName = "Unsupported", .xmlName = "Unsupported"};
inline constexpr Group kOnOtherPlatform{
    .displayName = "Elsewhere", .xmlName = "Elsewhere", .otherPlatform = "windows"};
inline constexpr Group kSearchForever{
    .displayName = "Look", .xmlName = "Look", .fields = kFields, .gather = searchForever};
inline constexpr Group kSearchForeverInOneInstance{
    .displayName = "Look", .xmlName = "Look", .fields = kFields, .gather = searchForeverInOneInstance};
inline constexpr Group kReadHugeLine{
    .displayName = "Line", .xmlName = "Line", .fields = kFields, .gather = readHugeLine};
inline constexpr Group kAddForever{
    .displayName = "Add", .xmlName = "Add", .fields = kFields, .gather = addForever};
inline constexpr Group kWriteForever{
    .displayName = "Write", .xmlName = "Write", .fields = kFields, .gather = writeForever};
inline constexpr Group kTwoReasons{
    .displayName = "Damaged", .xmlName = "Damaged", .fields = kFields, .gather = giveTwoReasons};
inline constexpr Group kOutOfMemory{
    .displayName = "Greedy", .xmlName = "Greedy", .fields = kFields, .gather = runOutOfMemory};
inline constexpr Group kWithSource{.displayName = "Sourced",
                                   .xmlName = "Sourced",
                                   .fields = kFields,
                                   .gather = findNothing,
                                   .sources = kSource};

inline std::vector<GroupResult> run(const std::vector<const Group*>& groups, const Limits& limits = Limits(),
                                    const Options& options = Options()) {
    GatheringContext context(options);
    std::vector<GroupResult> results;
    gatherGroups(
        context, groups, limits, [](GroupData& data) { data.sort(); },
        [&results](GroupResult&& result) { results.push_back(std::move(result)); });
    return results;
}

// The id of the process that gathered kPlain.
inline std::string gathererOf(const GroupResult& result) {
    const std::string xml =
        result.data ? std::string(render(*result.data, false).xml) : std::string(result.xml);
    const std::size_t begin = xml.find("<DeviceID>") + 10;
    return xml.substr(begin, xml.find("</DeviceID>") - begin);
}

}  // namespace toolkit::quorvah::fakes
