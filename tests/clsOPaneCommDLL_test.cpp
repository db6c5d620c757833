// The life of a public object, its connection, status and keys. What it displays: display_test.

#include "automation/clsOPaneCommDLL.h"

#include <gtest/gtest.h>

#include "support/bench.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Events = std::vector<std::string>;

class PublicClass : public testing::Test {
protected:
    std::int16_t synchronize(std::int16_t port = 1, std::int32_t rate = 9600, std::int16_t node = 3) {
        object->Synchronize(port, rate, node, status);
        return status;
    }

    TemporaryFolder folder;
    std::string file = folder.write("test.gen", fileText(generator()));
    std::int16_t status = -1;
    Bench bench;
    std::unique_ptr<clsOPaneCommDLL> object = std::make_unique<clsOPaneCommDLL>();
};

TEST_F(PublicClass, SynchronizeReopensAtItsRateAndWritesThePortOnlyWhenItDiffers) {
    bench.module.state().baudRate = 19200;
    EXPECT_EQ(synchronize(1, 19200), 0);
    EXPECT_EQ(synchronize(2, 19200), 0);
    EXPECT_EQ(bench.line.portEvents,
              (Events{"open 1 9600,N,8,1", "close", "open 1 19200,N,8,1",               // created, first
                      "close", "open 1 19200,N,8,1", "close", "open 2 19200,N,8,1"}));  // rate, then port
    EXPECT_EQ(threadLink()->Timeout(), 1000);
}

TEST_F(PublicClass, SynchronizeSaysWhatIsWrongAndTheNextOneWorks) {
    EXPECT_EQ(synchronize(1, 9600, 1), 1);
    EXPECT_EQ(synchronize(1, 4800), 1) << "at another speed both hear noise";
    EXPECT_EQ(raisedNumber([&] { synchronize(1, 0); }), 380);
    for (const std::int16_t port : {std::int16_t{1}, std::int16_t{-1}}) {
        bench.line.missingPort = port;
        EXPECT_EQ(raisedNumber([&] { synchronize(port); }), 8018);
        bench.line.missingPort = 0;
        EXPECT_EQ(synchronize(), 0);
    }
}

TEST_F(PublicClass, AVanishedDeviceRaisesAnErrorWithinOneTimeOut) {
    ASSERT_EQ(synchronize(), 0);
    bench.module.fault({.fault = Fault::unplug, .after = 1});
    const auto start = bench.time.micros;
    EXPECT_EQ(raisedNumber([&] { object->DisplayString("ABC", 0, 0, 0, 0, file, status); }), 57);
    EXPECT_LE(bench.time.since(start), 1000 + 2);
    EXPECT_FALSE(threadLink()->IsSynchronized());
    EXPECT_TRUE(threadLink()->OpenCommunication());
    EXPECT_FALSE(threadLink()->IsSynchronized()) << "the port has been closed meanwhile";
}

TEST_F(PublicClass, TheEndOfAnyObjectReleasesTheThreadsLink) {
    clsOPaneCommDLL second;
    EXPECT_EQ(synchronize(), 0) << "both use the second one's link";
    object.reset();
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    // A text is looked at before the link is needed.
    EXPECT_EQ(raisedNumber([&] { second.DisplayString("A", 0, 0, 0, 0, folder / "none", status); }), 53);
    second.DisplayString("", 0, 0, 0, 0, file, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(raisedNumber([&] { second.DisplayString("A", 0, 0, 0, 0, file, status); }), 91);
}

TEST_F(PublicClass, AHostEventMayReleaseTheObjectInTheMiddleOfACall) {
    ASSERT_EQ(synchronize(), 0);
    Events log;
    threadGlobals()->gobjLog->LogLevel(2);
    threadGlobals()->gobjLog->writer(std::make_unique<RecordingWriter>(log));
    bench.services->eventHook = [&] {
        if (bench.module.frames().size() == 1)
            object.reset();
    };
    object->DisplayString("ABCD", 0, 0, 0, 0, file, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(bench.module.frames().size(), 3U) << "the call keeps its link and its log to its end";
    EXPECT_EQ(log, (Events{"Cmd Type : 3", "Cmd Type : 3", "Cmd Type : 3"}));
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    EXPECT_EQ(threadGlobals(), nullptr) << "the set goes with its last holder";
}

TEST_F(PublicClass, StatusIsFiveFlags) {
    ASSERT_EQ(synchronize(), 0);
    using Flags = std::array<std::int16_t, 6>;  // the last one is the status
    const auto read = [this] {
        Flags f{7, 7, 7, 7, 7, 7};
        object->ReadStatus(f[0], f[1], f[2], f[3], f[4], f[5]);
        return f;
    };
    const auto write = [this](const Flags& f) {
        object->WriteStatus(f[0], f[1], f[2], f[3], f[4], status);
        return status;
    };
    auto& state = bench.module.state();
    state.upsideDown = true;
    state.framePattern = 255;
    state.lcdOn = false;
    EXPECT_EQ(read(), (Flags{1, 0, 1, 0, 1, 0}));

    const auto sent = bench.module.frames().size();
    for (std::size_t wrong = 0; wrong < 5; ++wrong)
        for (const int value : {2, -1}) {
            Flags flags{};
            flags[wrong] = static_cast<std::int16_t>(value);
            EXPECT_EQ(write(flags), 1);
        }
    ASSERT_EQ(bench.module.frames().size(), sent);
    EXPECT_EQ(write({1, 0, 1, 1, 0}), 0);
    EXPECT_EQ(bench.module.frames()[sent][5], 5) << "the frame first";
    EXPECT_EQ(bench.module.frames()[sent][3], 255);
    EXPECT_EQ(state.statusByte(), 0b101101) << "automatic Vlcd is always on";

    bench.module.fault({.fault = Fault::aux, .count = 10});
    EXPECT_EQ(read(), (Flags{0, 0, 0, 0, 0, 1}));
    const auto before = bench.module.frames().size();
    EXPECT_EQ(write({}), 1);
    EXPECT_EQ(bench.module.frames().size(), before + 5) << "no status is written after a refused frame";
}

TEST_F(PublicClass, ChangeBaudrateUsesCrystalType2) {
    ASSERT_EQ(synchronize(), 0);
    object->ChangeBaudrate(38400, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bench.module.state().baudRate, 38400);
    object->ChangeBaudrate(57600, status);
    EXPECT_EQ(status, 1);
}

TEST_F(PublicClass, EveryKeyHasTwoCodes) {
    ASSERT_EQ(synchronize(), 0);
    const auto read = [this](int code) {
        bench.module.state().lastKey = static_cast<std::uint16_t>(code);
        std::array<std::int16_t, 3> key{42, 43, 7};
        object->ReadIRLastKey(key[0], key[1], key[2]);
        return key;
    };
    using Key = std::array<std::int16_t, 3>;  // number, toggle, status
    std::int16_t number = 0;
    for (const int code : {0x7F3, 0x7C3, 0x7D4, 0x7D6, 0x7DF, 0x7EF, 0x7DE, 0x7EE, 0x7F2}) {
        ++number;
        EXPECT_EQ(read(code), (Key{number, 0, 0}));
        EXPECT_EQ(read(code + 0x800), (Key{number, 1, 0}));
    }
    EXPECT_EQ(read(0xFFFF), (Key{0, 0, 0}));
    for (const int none : {0x123, 0x17F3, 0xF7F3, 0})
        EXPECT_EQ(read(none), (Key{42, 43, 0})) << "what was passed stays";
    bench.module.fault({.fault = Fault::aux, .count = 5});
    EXPECT_EQ(read(0x7F3), (Key{-1, 0, 1}));
}

}  // namespace
}  // namespace opane::test
