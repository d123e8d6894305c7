#include "toolkit/quorvah/scan/GroupRunner.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "tests/support/RefusedCall.h"
#include "tests/support/ScratchDir.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/scan/Confinement.h"

using std::chrono::milliseconds;
using toolkit::Root;
using toolkit::quorvah::FieldDef;
using toolkit::quorvah::frameLength;
using toolkit::quorvah::frameOf;
using toolkit::quorvah::gatherGroups;
using toolkit::quorvah::Group;
using toolkit::quorvah::GroupResult;
using toolkit::quorvah::GroupState;
using toolkit::quorvah::Instance;
using toolkit::quorvah::Limits;
using toolkit::quorvah::Options;
using toolkit::quorvah::readFrame;
using toolkit::quorvah::render;
using toolkit::quorvah::Report;
using toolkit::quorvah::Scan;
using toolkit::quorvah::SharedTexts;

namespace {

constexpr FieldDef kFields[] = {{"DeviceID"}, {"Value"}};

void quick(Scan& /*scan*/, Report& report) {
    report.add("one").set("Value", 1);
    report.add("two");
}
void large(Scan& /*scan*/, Report& report) {
    for (int i = 0; i < 3000; ++i) report.add(std::to_string(i)).set("Value", std::string(100, 'x'));
}
void hang(Scan& /*scan*/, Report& report) {
    report.add("never seen");
    for (;;) pause();
}
void ignoreSignalsAndHang(Scan& scan, Report& report) {
    signal(SIGTERM, SIG_IGN);
    hang(scan, report);
}
void crash(Scan& /*scan*/, Report& report) {
    report.add("never seen");
    raise(SIGKILL);
}
void leave(Scan& /*scan*/, Report& /*report*/) {
    _exit(0);
}
void fail(Scan& /*scan*/, Report& report) {
    report.add("kept");
    throw std::runtime_error("no such luck");
}
void unreadable(Scan& scan, Report& report) {
    report.add("kept").set("Value", scan.root().readLine("/secret"));
}
void talk(Scan& /*scan*/, Report& report) {
    std::printf("noise\n");
    std::fflush(stdout);
    report.add("silent");
}

void plain(Scan& scan, Report& report) {
    scan.checkTime();
    report.add(std::to_string(getpid()));
}
void endless(Scan& scan, Report& report) {
    report.add("kept");
    for (;;) scan.checkTime();
}

void lookForEver(Scan& scan, Report& report) {
    report.add("kept");
    for (;;) scan.root().exists("/no/such/file");
}
void lookForEverInOne(Scan& scan, Report& report) {
    report.addOne([&scan](Instance& instance) {
        instance.set("Value", "kept");
        for (;;) scan.root().list("/");
    });
}
void readHugeLine(Scan& scan, Report& report) {
    report.add("kept").set("Value", scan.root().readLine("/line"));
}
void addForEver(Scan& /*scan*/, Report& report) {
    for (;;) report.add("kept");
}
void writeForEver(Scan& /*scan*/, Report& report) {
    for (;;) report.add("kept").set("Value", std::string(60'000, 'x'));
}

void damaged(Scan& /*scan*/, Report& report) {
    report.partial("broken");
    report.partial("other");
}
void exhaust(Scan& /*scan*/, Report& /*report*/) {
    throw std::bad_alloc();
}
void findNothing(Scan& /*scan*/, Report& /*report*/) {}

constexpr const char* kSource[] = {"/no/such/source"};

void hungry(Scan& /*scan*/, Report& report) {
    for (;;) report.add(std::string(std::size_t{1} << 20, 'x'));
}
void reachOut(Scan& /*scan*/, Report& report) {
    char program[] = "/bin/true";
    char* const arguments[] = {program, nullptr};
    const auto tell = [&report](const char* what, bool refused) { report.add(what).set("Value", refused); };
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

constexpr const char* kQuickXml =
    "<Quick><DeviceID>one</DeviceID><Value>1</Value></Quick><Quick><DeviceID>two</DeviceID><Value/></Quick>";

constexpr Group kQuick{"Quick", "Quick", kFields, quick};
constexpr Group kLarge{"Large", "Large", kFields, large};
constexpr Group kHang{"Hang", "Hang", kFields, hang};
constexpr Group kStubborn{"Stubborn", "Stubborn", kFields, ignoreSignalsAndHang};
constexpr Group kCrash{"Crash", "Crash", kFields, crash};
constexpr Group kLeave{"Leave", "Leave", kFields, leave};
constexpr Group kFail{"Fail", "Fail", kFields, fail};
constexpr Group kUnreadable{"Unreadable", "Unreadable", kFields, unreadable};
constexpr Group kHungry{"Hungry", "Hungry", kFields, hungry};
constexpr Group kReachOut{"Reach Out", "ReachOut", kFields, reachOut};
constexpr Group kTalk{"Talk", "Talk", kFields, talk};
constexpr Group kPlain{"Plain", "Plain", kFields, plain, true};
constexpr Group kEndless{"Endless", "Endless", kFields, endless, true};
constexpr Group kNotBuilt{"Not Built", "NotBuilt", {}, nullptr};
constexpr Group kElsewhere{"Elsewhere", "Elsewhere", {}, nullptr, false, {}, "windows"};
constexpr Group kLookForEver{"Look", "Look", kFields, lookForEver};
constexpr Group kLookForEverInOne{"Look", "Look", kFields, lookForEverInOne};
constexpr Group kReadHugeLine{"Line", "Line", kFields, readHugeLine};
constexpr Group kAddForEver{"Add", "Add", kFields, addForEver};
constexpr Group kWriteForEver{"Write", "Write", kFields, writeForEver};
constexpr Group kDamaged{"Damaged", "Damaged", kFields, damaged};
constexpr Group kGreedy{"Greedy", "Greedy", kFields, exhaust};
constexpr Group kSourced{"Sourced", "Sourced", kFields, findNothing, false, kSource};

std::vector<GroupResult> run(const std::vector<const Group*>& groups, const Limits& limits = Limits(),
                             const Options& options = Options()) {
    Scan scan(options);
    std::vector<GroupResult> results;
    gatherGroups(
        scan, groups, limits, [](Report& report) { report.sort(); },
        [&results](GroupResult&& result) { results.push_back(std::move(result)); });
    return results;
}

// The process that gathered kPlain.
std::string gathererOf(const GroupResult& result) {
    const std::string xml =
        result.report ? std::string(render(*result.report, false).xml) : std::string(result.xml);
    const std::size_t begin = xml.find("<DeviceID>") + 10;
    return xml.substr(begin, xml.find("</DeviceID>") - begin);
}

}  // namespace

TEST(GroupRunner, AGroupThatLooksAtTheTreeForEverKeepsWhatItHas) {
    const Limits limits{milliseconds(300), milliseconds(5000)};
    for (const Group* const group : {&kLookForEver, &kLookForEverInOne}) {
        const std::vector<GroupResult> results = run({group, &kQuick}, limits);
        ASSERT_EQ(2U, results.size());
        EXPECT_EQ(GroupState::Partial, results[0].state);
        EXPECT_EQ("timeout", results[0].reason);
        EXPECT_EQ(1U, results[0].instances);
        EXPECT_NE(std::string::npos, results[0].xml.find("kept"));
        EXPECT_EQ(kQuickXml, results[1].xml);
    }
}

TEST(GroupRunner, WhatIsTooLargeToBeRealMakesAGroupPartial) {
    const zavtest::ScratchDir dir;
    dir.write("line", std::string(Root::kLineLimit + 1, 'x'));
    Options options;
    options.root = dir.path().string();
    const std::vector<GroupResult> results = run({&kReadHugeLine, &kQuick}, Limits(), options);
    EXPECT_EQ(GroupState::Partial, results.front().state);
    EXPECT_EQ("too-large", results.front().reason);
    EXPECT_EQ(GroupState::Complete, results.back().state);
}

TEST(GroupRunner, AGroupWithoutEndIsReportedAsFarAsAnyMachineGoes) {
    const std::vector<GroupResult> results = run({&kAddForEver, &kWriteForEver, &kQuick});
    ASSERT_EQ(3U, results.size());
    EXPECT_EQ(Report::kMostInstances, results[0].instances);
    EXPECT_EQ("too-large", results[0].reason);
    EXPECT_LE(results[1].instances * 60'000, Report::kMostBytes);
    EXPECT_GT(results[1].instances, 1000U);
    EXPECT_EQ("too-large", results[1].reason);
    EXPECT_EQ(kQuickXml, results[2].xml);
}

TEST(GroupRunner, ReportsEachGroupInOrder) {
    const std::vector<GroupResult> results = run({&kQuick, &kLarge, &kQuick});
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].instances, 2U);
    EXPECT_EQ(results[0].xml, kQuickXml);
    EXPECT_EQ(results[0].reason, "");
    EXPECT_EQ(results[1].instances, 3000U);
    EXPECT_EQ(results[2].group, &kQuick);
    EXPECT_TRUE(run({}).empty());
}

TEST(GroupRunner, AGroupThatHangsCostsOnlyItself) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kHang, &kStubborn, &kQuick}, {milliseconds(300), milliseconds(60000)});
    ASSERT_EQ(results.size(), 4U);
    EXPECT_EQ(results[0].instances, 2U);
    EXPECT_EQ(results[1].reason, "timeout");
    EXPECT_EQ(results[1].instances, 0U);
    EXPECT_EQ(results[2].reason, "timeout");
    EXPECT_EQ(results[3].reason, "");
    EXPECT_EQ(results[3].instances, 2U);
}

TEST(GroupRunner, TheRunEndsWithItsOwnLimit) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kHang, &kQuick}, {milliseconds(60000), milliseconds(300)});
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].reason, "");
    EXPECT_EQ(results[1].reason, "timeout");
    EXPECT_EQ(results[2].reason, "timeout") << "no time is left for it";
}

TEST(GroupRunner, AGroupThatDiesCostsOnlyItself) {
    for (const Group* const group : {&kCrash, &kLeave}) {
        const std::vector<GroupResult> results = run({group, &kQuick});
        ASSERT_EQ(results.size(), 2U);
        EXPECT_EQ(results[0].reason, "failed");
        EXPECT_EQ(results[0].instances, 0U);
        EXPECT_EQ(results[1].instances, 2U);
    }
}

TEST(GroupRunner, AnExceptionKeepsWhatWasFoundAndSaysWhy) {
    const std::vector<GroupResult> results = run({&kFail, &kQuick});
    EXPECT_EQ(results[0].reason, "failed");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_EQ(results[0].warnings, (std::vector<std::string>{"Fail: no such luck"}));
    EXPECT_EQ(results[1].reason, "");
}

#ifndef ZAV_SANITIZED
TEST(GroupRunner, AGroupThatTakesAllMemoryCostsOnlyItself) {
    const std::vector<GroupResult> results = run({&kHungry, &kQuick});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_TRUE(results[0].reason == "memory" || results[0].reason == "too-large") << results[0].reason;
    EXPECT_EQ(results[1].reason, "");
    EXPECT_EQ(results[1].instances, 2U);
}

TEST(GroupRunner, GroupsReachTheKernelAndNobodyElse) {
    const std::vector<GroupResult> results = run({&kReachOut});
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].instances, 8U);
    EXPECT_EQ(results[0].xml.find("false"), std::string_view::npos) << results[0].xml;
}
#endif

TEST(GroupRunner, WithoutAWholeSandboxNothingIsGatheredUnlessTheOptionsAllowIt) {
    const int missing = zavtest::whereRefused(SYS_prctl, ENOSYS, [] {
        Options options;
        options.sandboxOptional = true;
        if (run({&kQuick}, Limits(), options)[0].instances != 2) return 1;
        try {
            run({&kQuick});
        } catch (const toolkit::quorvah::Unconfined&) {
            return 0;
        }
        return 2;
    });
    EXPECT_EQ(missing, 0);
}

TEST(GroupRunner, AGroupThatIsNotBuiltIsUnsupported) {
    const std::vector<GroupResult> results = run({&kNotBuilt});
    EXPECT_EQ(results[0].state, GroupState::Unsupported);
    EXPECT_EQ(results[0].reason, "unsupported");
    EXPECT_EQ(results[0].instances, 0U);
}

TEST(GroupRunner, AGroupOfAnotherSystemIsNotApplicable) {
    const std::vector<GroupResult> results = run({&kElsewhere});
    EXPECT_EQ(results[0].state, GroupState::NotApplicable);
    EXPECT_EQ(results[0].reason, "windows");
}

TEST(GroupRunner, AReasonWithInstancesIsPartialAndWithoutThemUnread) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kFail, &kDamaged, &kHang}, {milliseconds(300), milliseconds(60000)});
    EXPECT_EQ(results[0].state, GroupState::Complete);
    EXPECT_EQ(results[1].state, GroupState::Partial);
    EXPECT_EQ(results[2].state, GroupState::Unread);
    EXPECT_EQ(results[2].reason, "broken") << "the first reason stands";
    EXPECT_EQ(results[3].state, GroupState::Unread);
    EXPECT_EQ(results[3].reason, "timeout");
}

TEST(GroupRunner, AGroupThatRunsOutOfMemoryIsUnread) {
    const std::vector<GroupResult> results = run({&kGreedy, &kQuick});
    EXPECT_EQ(results[0].state, GroupState::Unread);
    EXPECT_EQ(results[0].reason, "memory");
    EXPECT_EQ(results[1].state, GroupState::Complete);
}

TEST(GroupRunner, NoInstanceWithoutTheSourceIsNotNothing) {
    const zavtest::ScratchDir tree;
    Options options;
    options.root = tree.path().string();
    EXPECT_EQ(run({&kSourced}, Limits(), options)[0].state, GroupState::NotApplicable);
    EXPECT_EQ(run({&kSourced}, Limits(), options)[0].reason, "not-in-tree");
    EXPECT_EQ(run({&kSourced})[0].state, GroupState::Unread) << "this machine should have it";
    EXPECT_EQ(run({&kSourced})[0].reason, "no-source");
    tree.write("no/such/source/x", "");
    EXPECT_EQ(run({&kSourced}, Limits(), options)[0].state, GroupState::Complete);
}

TEST(GroupRunner, AGroupThatMayNotReadIsPartialAndTheNextOneIsNot) {
    const zavtest::ScratchDir dir;
    std::filesystem::permissions(dir.write("secret", "x\n"), std::filesystem::perms::none);
    std::filesystem::permissions(dir.path(), std::filesystem::perms(0755));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        Options options;
        options.root = dir.path().string();
        const std::vector<GroupResult> results = run({&kUnreadable, &kQuick}, Limits(), options);
        const bool first = results[0].reason == "permission" && results[0].instances == 1 &&
                           results[0].xml == "<Unreadable><DeviceID>kept</DeviceID><Value/></Unreadable>";
        _exit(first && results[1].reason.empty() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(GroupRunner, WhatAGroupWritesDoesNotReachTheScannersOutput) {
    testing::internal::CaptureStdout();
    const std::vector<GroupResult> results = run({&kTalk});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(results[0].instances, 1U);
}

TEST(GroupRunner, GroupsOfPlainFilesAreGatheredWithoutAChild) {
    const std::string here = std::to_string(getpid());
    const std::vector<GroupResult> alone = run({&kPlain, &kPlain});
    ASSERT_EQ(alone.size(), 2U);
    for (const GroupResult& result : alone) {
        EXPECT_EQ(result.group, &kPlain);
        EXPECT_EQ(result.instances, 1U);
        EXPECT_EQ(gathererOf(result), here);
    }
    const std::vector<GroupResult> mixed = run({&kPlain, &kQuick});
    ASSERT_EQ(mixed.size(), 2U);
    EXPECT_NE(gathererOf(mixed[0]), here) << "the other group needs a child anyway";
    EXPECT_EQ(mixed[1].xml, kQuickXml);
}

TEST(GroupRunner, ATreeOfFilesIsReadInAChildAlways) {
    const zavtest::ScratchDir dir;
    Options options;
    options.root = dir.path().string();
    const std::vector<GroupResult> results = run({&kPlain}, Limits(), options);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_NE(gathererOf(results[0]), std::to_string(getpid()));
}

TEST(GroupRunner, AGroupOfPlainFilesEndsWithItsTimeAndKeepsWhatItHas) {
    const std::vector<GroupResult> results =
        run({&kEndless, &kPlain}, {milliseconds(50), milliseconds(60000)});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].reason, "timeout");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_TRUE(results[0].warnings.empty());
    EXPECT_EQ(results[1].reason, "");
    EXPECT_EQ(results[1].instances, 1U);
}

TEST(GroupRunner, GroupsOfPlainFilesEndWithTheRun) {
    const std::vector<GroupResult> results =
        run({&kEndless, &kPlain}, {milliseconds(60000), milliseconds(50)});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].reason, "timeout");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_EQ(results[1].reason, "timeout") << "no time is left for it";
    EXPECT_EQ(results[1].instances, 0U);
}

TEST(GroupRunner, EveryChildEnds) {
    run({&kQuick, &kHang, &kCrash, &kQuick}, {milliseconds(200), milliseconds(60000)});
    pid_t ended = 0;
    for (int tries = 0; tries < 1000 && ended != -1; ++tries) {
        ended = waitpid(-1, nullptr, WNOHANG);
        if (ended == 0) usleep(10000);
    }
    EXPECT_EQ(ended, -1) << "a child still runs";
}
