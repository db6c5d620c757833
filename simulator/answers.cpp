#include "simulator/answers.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "simulator/readings.h"

namespace opane::simulator {
namespace {

// The info bytes of the answer, or nothing: refused, and nothing has been changed.
using Info = std::optional<std::vector<std::uint8_t>>;
const Info kDone = std::vector<std::uint8_t>{};

Info oneByte(std::uint8_t value) {
    return std::vector<std::uint8_t>{value};
}

Info lowByteFirst(std::uint16_t value) {
    return std::vector<std::uint8_t>{static_cast<std::uint8_t>(value & 0xFF), static_cast<std::uint8_t>(value >> 8)};
}

// --- patterns on the screen

Info showLine(ModuleState& state, const Frame& request) {
    auto rowByte = request.data.begin();
    for (int row = 0; row < kBlockSize; ++row)
        for (std::uint8_t& shown : state.screen.at(static_cast<std::size_t>(request.aux1 * kBlockSize + row)))
            shown = *rowByte++;
    return kDone;
}

void putBlock(ScreenImage& screen, int line, int column, std::span<const std::uint8_t> rowBytes) {
    auto pixelRow = static_cast<std::size_t>(line * kBlockSize);
    for (const std::uint8_t rowByte : rowBytes)
        screen.at(pixelRow++).at(static_cast<std::size_t>(column)) = rowByte;
}

Info showBlock(ModuleState& state, const Frame& request) {
    putBlock(state.screen, request.aux1, request.aux2, request.data);
    return kDone;
}

// Block by block: top left, top right, bottom left, bottom right.
Info showSquare(ModuleState& state, const Frame& request) {
    for (int block = 0; block < 4; ++block)
        putBlock(state.screen, request.aux1 + block / 2, request.aux2 + block % 2,
                 std::span(request.data).subspan(static_cast<std::size_t>(block * kBlockSize), kBlockSize));
    return kDone;
}

Info drawFrame(ModuleState& state, const Frame& request) {
    state.framePattern = request.aux1;
    return kDone;
}

Info clear(ModuleState& state, const Frame& request) {
    for (auto& row : state.screen)
        row.fill(request.aux1);
    return kDone;
}

// --- what the module is and how it stands

Info version(ModuleState& state, const Frame&) {
    std::vector<std::uint8_t> text(state.version.begin(), state.version.end());
    text.resize(std::min<std::size_t>(text.size(), 254));
    text.push_back(0);
    return text;
}

Info readStatus(ModuleState& state, const Frame&) {
    return oneByte(state.statusByte());
}

Info writeStatus(ModuleState& state, const Frame& request) {
    constexpr std::array kSettings{&ModuleState::upsideDown, &ModuleState::invertedDisplay, &ModuleState::lcdOn,
                                   &ModuleState::automaticBacklight, &ModuleState::automaticVlcd};
    state.*kSettings.at(request.aux1) = request.aux2 != 0;
    return kDone;
}

Info readAdc(ModuleState& state, const Frame& request) {
    return lowByteFirst(drifted(state, state.adc.at(request.aux1)));
}

Info readTemperatureKeyOrVlcd(ModuleState& state, const Frame& request) {
    return lowByteFirst(
        std::array{drifted(state, state.temperature), state.lastKey, drifted(state, state.vlcd)}.at(request.aux1));
}

// --- backlight and LCD controller

template <BacklightBank VolatileState::*bank>
Info readBacklight(ModuleState& state, const Frame& request) {
    return oneByte((state.*bank).at(request.aux1));
}

template <BacklightBank VolatileState::*bank>
Info writeBacklight(ModuleState& state, const Frame& request) {
    (state.*bank).at(request.aux1) = request.aux2;
    return kDone;
}

Info readSed1530(ModuleState& state, const Frame& request) {
    return oneByte(state.sed1530.at(request.aux2));
}

Info writeSed1530(ModuleState& state, const Frame& request) {
    state.sed1530.at(request.aux2) = request.data.at(0);
    return kDone;
}

// --- EEPROMs

// Empty when the range is refused.
std::span<std::uint8_t> eepromRange(std::span<std::uint8_t> eeprom, const Frame& request, std::size_t length) {
    const std::size_t base = request.aux1 + request.aux2 * std::size_t{256};
    if (length > kLongestTransfer || length > eeprom.size() || base > eeprom.size() - length)
        return {};
    return eeprom.subspan(base, length);
}

template <auto eeprom>
Info readEeprom(ModuleState& state, const Frame& request) {
    const auto range = eepromRange(state.*eeprom, request, request.data.at(0));
    if (range.empty())
        return std::nullopt;
    return std::vector<std::uint8_t>(range.begin(), range.end());
}

template <auto eeprom>
Info writeEeprom(ModuleState& state, const Frame& request) {
    const auto range = eepromRange(state.*eeprom, request, request.data.size());
    if (range.empty())
        return std::nullopt;
    std::copy(request.data.begin(), request.data.end(), range.begin());
    return kDone;
}

// --- speed and reset

// A rate is the crystal's clock over 256 - code, doubled by the flag: crystals 1 and 2 give 28800 and 38400 over it.
// Crystal 3 only comes near its rates that way, so it takes a table to say what each code is meant for.
struct Rate {
    int quartz;
    std::uint8_t code;
    std::uint8_t flag;
    int baudRate;
};
constexpr Rate kRates[] = {
    {1, 232, 0, 1200}, {1, 244, 0, 2400}, {1, 250, 0, 4800}, {1, 253, 0, 9600},  {1, 253, 1, 19200}, {2, 224, 0, 1200},
    {2, 240, 0, 2400}, {2, 248, 0, 4800}, {2, 252, 0, 9600}, {2, 254, 0, 19200}, {2, 255, 0, 38400}, {3, 187, 1, 1200},
    {3, 239, 0, 2400}, {3, 247, 0, 4800}, {3, 247, 1, 9600}, {3, 254, 0, 19200}, {3, 255, 0, 38400}, {3, 255, 1, 57600},
};

Info changeBaudRate(ModuleState& state, const Frame& request) {
    const auto baudRate = baudRateOf(state.quartz, request.aux1, request.aux2);
    if (!baudRate)
        return std::nullopt;
    state.baudRate = *baudRate;
    return kDone;
}

constexpr std::uint8_t kWholeModule = 0;  // else the light control

Info reset(ModuleState& state, const Frame& request) {
    if (request.aux1 == kWholeModule) {
        state.powerOn();
    } else {
        state.red = VolatileState{}.red;
        state.green = VolatileState{}.green;
    }
    return kDone;
}

// --- the commands

constexpr int kAnyLength = -1;
constexpr std::uint8_t kReset = 7;
constexpr std::uint8_t kChangeBaudRate = 14;

struct Command {
    std::uint8_t type;
    int leng;              // data bytes of the request, exactly
    std::uint8_t aux1Max;  // 0 where the field is not used
    std::uint8_t aux2Max;
    Info (*carryOut)(ModuleState&, const Frame&);
};

constexpr Command kCommands[] = {
    {1, 120, kTextLines - 1, 0, showLine},
    {3, 8, kTextLines - 1, kBlockColumns - 1, showBlock},
    {4, 32, kTextLines - 2, kBlockColumns - 2, showSquare},
    {5, 0, 255, 0, drawFrame},
    {6, 0, 255, 0, clear},
    {kReset, 0, 1, 0, reset},
    {8, 0, 0, 0, version},
    {9, 0, 0, 0, readStatus},
    {10, 0, 4, 1, writeStatus},
    {11, 0, 255, 0, readAdc},
    {12, 1, 255, 255, readEeprom<&ModuleState::userEeprom>},
    {13, kAnyLength, 255, 255, writeEeprom<&ModuleState::userEeprom>},
    {kChangeBaudRate, 0, 255, 1, changeBaudRate},
    {16, 0, 0, 1, readSed1530},
    {17, 1, 0, 1, writeSed1530},
    {18, 0, 2, 0, readTemperatureKeyOrVlcd},
    {19, 0, 255, 255, writeBacklight<&VolatileState::green>},
    {20, 0, 255, 255, writeBacklight<&VolatileState::red>},
    {21, 0, 255, 0, readBacklight<&VolatileState::green>},
    {22, 0, 255, 0, readBacklight<&VolatileState::red>},
    {32, 1, 255, 255, readEeprom<&ModuleState::systemEeprom>},
    {33, kAnyLength, 255, 255, writeEeprom<&ModuleState::systemEeprom>},
};

Frame answerOf(const ModuleState& state, std::uint8_t type, std::uint8_t aux1, std::vector<std::uint8_t> info) {
    return {static_cast<std::uint8_t>(state.node), aux1, 0, type, std::move(info)};
}

}  // namespace

Frame carryOut(ModuleState& state, const Frame& request) {
    const auto command = std::ranges::find_if(kCommands, [&](const Command& row) { return row.type == request.type; });
    if (command == std::end(kCommands))
        return commandError(state);
    if (command->leng != kAnyLength && static_cast<std::size_t>(command->leng) != request.data.size())
        return answerOf(state, request.type, kWrongLength, {});
    if (request.aux1 > command->aux1Max || request.aux2 > command->aux2Max)
        return answerOf(state, request.type, kOutOfRange, {});
    auto info = command->carryOut(state, request);
    if (!info)
        return answerOf(state, request.type, kOutOfRange, {});
    return answerOf(state, request.type, 0, std::move(*info));
}

Frame commandError(const ModuleState& state) {
    return answerOf(state, kCommandError, 0, {});
}

bool setsSpeed(const Frame& request, const Frame& answer) {
    const bool asksForIt = request.type == kChangeBaudRate || (request.type == kReset && request.aux1 == kWholeModule);
    return asksForIt && answer.type == request.type && answer.aux1 == 0;
}

std::optional<int> baudRateOf(int quartz, std::uint8_t code, std::uint8_t flag) {
    const auto rate = std::ranges::find_if(
        kRates, [&](const Rate& row) { return row.quartz == quartz && row.code == code && row.flag == flag; });
    if (rate == std::end(kRates))
        return std::nullopt;
    return rate->baudRate;
}

bool offersBaudRate(int quartz, int baudRate) {
    return std::ranges::any_of(kRates,
                               [&](const Rate& row) { return row.quartz == quartz && row.baudRate == baudRate; });
}

}  // namespace opane::simulator
