#include "automation/clsOPaneCommDLL.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/bench.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Events = std::vector<std::string>;

std::int16_t synchronize(clsOPaneCommDLL& object, std::int16_t port = 1, std::int32_t rate = 9600,
                         std::int16_t node = 3) {
    std::int16_t status = -1;
    object.Synchronize(port, rate, node, status);
    return status;
}

std::string generatorFile(const TemporaryFolder& folder) {
    const ByteArray bytes = generator();
    return folder.write("test.gen", std::string(bytes.begin(), bytes.end()));
}

TEST(PublicClass, SynchronizeReopensAtItsRateAndWritesThePortOnlyWhenItDiffers) {
    Bench bench({.node = 2, .baudRate = 19200});
    clsOPaneCommDLL object;
    EXPECT_EQ(synchronize(object, 1, 19200, 2), 0);
    EXPECT_EQ(synchronize(object, 2, 19200, 2), 0);
    EXPECT_EQ(bench.line.portEvents,
              (Events{"open 1 9600,N,8,1", "close", "open 1 19200,N,8,1",               // created, first
                      "close", "open 1 19200,N,8,1", "close", "open 2 19200,N,8,1"}));  // rate, then port
    EXPECT_EQ(threadLink()->Timeout(), 1000);
}

TEST(PublicClass, SynchronizeGivesStatus1WithoutTheModuleOfThatNodeAndRate) {
    Bench bench;
    clsOPaneCommDLL object;
    EXPECT_EQ(synchronize(object, 1, 9600, 1), 1);
    EXPECT_EQ(synchronize(object, 1, 4800, 3), 1) << "at another speed both hear noise";
    EXPECT_EQ(synchronize(object), 0);
    EXPECT_EQ(raisedNumber([&] { synchronize(object, 1, 0); }), 380);
}

TEST(PublicClass, IsMadeWithoutAPortAndOpensItAtSynchronize) {
    Bench bench;
    bench.line.missingPort = 1;
    clsOPaneCommDLL object;
    EXPECT_EQ(raisedNumber([&] { synchronize(object); }), 8018);
    bench.line.missingPort = 0;
    EXPECT_EQ(synchronize(object), 0);
}

TEST(PublicClass, APortNumberThatIsNoneIsCorrectedByTheNextSynchronize) {
    Bench bench;
    bench.line.missingPort = -1;
    clsOPaneCommDLL object;
    EXPECT_EQ(raisedNumber([&] { synchronize(object, -1); }), 8018);
    EXPECT_EQ(synchronize(object), 0);
}

TEST(PublicClass, AVanishedDeviceRaisesAnErrorAndTheNextSynchronizeWorks) {
    const TemporaryFolder folder;
    Bench bench;
    clsOPaneCommDLL object;
    ASSERT_EQ(synchronize(object), 0);
    bench.module.fault({.fault = Fault::unplug, .after = 1});
    std::int16_t status = -1;
    const auto start = bench.time.micros;
    EXPECT_EQ(raisedNumber([&] { object.DisplayString("ABC", 0, 0, 0, 0, generatorFile(folder), status); }), 57);
    EXPECT_LE(bench.time.since(start), 1000 + 2) << "within one time-out";
    EXPECT_FALSE(threadLink()->IsSynchronized());
    EXPECT_TRUE(threadLink()->OpenCommunication());
    EXPECT_FALSE(threadLink()->IsSynchronized()) << "the port has been closed meanwhile";
    EXPECT_EQ(raisedNumber([&] { synchronize(object); }), 57);
    bench.module.replug();
    EXPECT_EQ(synchronize(object), 0);
}

TEST(PublicClass, VersionNeedsNoModule) {
    Bench bench;
    bench.line.missingPort = 1;
    clsOPaneCommDLL object;
    std::string version = "before";
    object.Version(version);
    EXPECT_EQ(version, "OpaneCommDLL V1.0.0");
}

TEST(PublicClass, TheEndOfAnyObjectReleasesTheThreadsLink) {
    Bench bench;
    auto first = std::make_unique<clsOPaneCommDLL>();
    auto second = std::make_unique<clsOPaneCommDLL>();
    EXPECT_EQ(synchronize(*first), 0) << "both use the second one's link";
    first.reset();
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    EXPECT_EQ(raisedNumber([&] { synchronize(*second); }), 91);
    // A text is looked at before the link is needed.
    const TemporaryFolder folder;
    const std::string file = generatorFile(folder);
    std::int16_t status = -1;
    EXPECT_EQ(raisedNumber([&] { second->DisplayString("A", 0, 0, 0, 0, folder / "none", status); }), 53);
    second->DisplayString("", 0, 0, 0, 0, file, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(raisedNumber([&] { second->DisplayString("A", 0, 0, 0, 0, file, status); }), 91);
    second.reset();
    EXPECT_EQ(threadGlobals(), nullptr) << "the set goes with its last holder";
    clsOPaneCommDLL third;
    EXPECT_EQ(synchronize(third), 0);
}

TEST(PublicClass, MayEndOnAnotherThread) {
    Bench bench;
    auto object = std::make_unique<clsOPaneCommDLL>();
    std::thread([&object] { object.reset(); }).join();
    EXPECT_EQ(threadGlobals(), nullptr);
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    clsOPaneCommDLL next;
    EXPECT_EQ(synchronize(next), 0);
}

TEST(PublicClass, EachThreadHasItsOwnLink) {
    const auto onItsOwn = [](std::int16_t node, bool& done) {
        Bench bench({.node = node});
        clsOPaneCommDLL object;
        for (int i = 0; i < 50; ++i) {
            if (synchronize(object, 1, 9600, node) != 0 || threadLink()->CommPort() != 1)
                return;
        }
        done = bench.module.handshakes() == 50;
    };
    bool first = false;
    bool second = false;
    std::thread one([&] { onItsOwn(1, first); });
    std::thread two([&] { onItsOwn(2, second); });
    one.join();
    two.join();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

TEST(PublicClass, AHostEventMayReleaseTheObjectInTheMiddleOfACall) {
    const TemporaryFolder folder;
    const std::string file = generatorFile(folder);
    Bench bench;
    auto object = std::make_unique<clsOPaneCommDLL>();
    ASSERT_EQ(synchronize(*object), 0);
    std::vector<std::string> log;
    threadLog()->LogLevel(2);
    threadLog()->writer(std::make_unique<RecordingWriter>(log));

    bench.services->eventHook = [&] {
        if (bench.module.frames().size() == 1)
            object.reset();
    };
    std::int16_t status = -1;
    object->DisplayString("ABCD", 0, 0, 0, 0, file, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(bench.module.frames().size(), 3U) << "the call keeps its link and its log to its end";
    EXPECT_EQ(log, (Events{"Cmd Type : 3", "Cmd Type : 3", "Cmd Type : 3"}));
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    EXPECT_EQ(threadGlobals(), nullptr);
}

}  // namespace
}  // namespace opane::test
