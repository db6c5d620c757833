#include "simulator/faults.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <stdexcept>

#include "shared/whole_number.h"

namespace opane::simulator {
namespace {

// What stands behind the colon.
enum class Colon { nothing, count, parameter };

struct FaultRow {
    Fault fault;
    std::string_view name;
    Colon colon;
    int least;
    int most;
    int byDefault;
    bool takesCount;  // xCOUNT may follow
    std::string_view help;
};

constexpr int kMostCounted = 999'999;
constexpr std::size_t kLongestOrder = 64;  // characters; the grammar's matcher takes stack for each of them

constexpr FaultRow kFaults[] = {
    {Fault::ignore, "ignore", Colon::count, 1, kMostCounted, 1, false, "N requests go unheard and unanswered"},
    {Fault::ignoreHandshake, "ignore-handshake", Colon::count, 1, kMostCounted, 1, false, "N handshakes go unanswered"},
    {Fault::silent, "silent", Colon::nothing, 0, 0, 0, false, "nothing is heard or answered any more"},
    {Fault::wrongType, "wrong-type", Colon::nothing, 0, 0, 0, true, "the answer's type is the request's plus 1"},
    {Fault::typeZero, "type-zero", Colon::nothing, 0, 0, 0, true, "rejected: the answer's type is 0"},
    {Fault::aux, "aux", Colon::parameter, 1, 255, 1, true, "refused: the answer's Aux1 is N"},
    {Fault::cutInfo, "cut-info", Colon::parameter, 0, 255, 0, true, "the answer ends after N info bytes"},
    {Fault::noChecksum, "no-checksum", Colon::nothing, 0, 0, 0, true, "the answer lacks its checksum"},
    {Fault::wrongChecksum, "wrong-checksum", Colon::nothing, 0, 0, 0, true, "the answer's checksum is off by one"},
    {Fault::garbage, "garbage", Colon::parameter, 1, 255, 3, true, "N bytes of garbage come before the answer"},
    {Fault::lostRate, "lost-rate", Colon::nothing, 0, 0, 0, true, "a change of speed is answered but not made"},
    {Fault::delay, "delay", Colon::parameter, 0, 60'000, 200, true, "the answer starts N milliseconds late"},
    {Fault::unplug, "unplug", Colon::nothing, 0, 0, 0, false, "the device vanishes at the request"},
};

const FaultRow& rowOf(Fault fault) {
    return *std::ranges::find(kFaults, fault, &FaultRow::fault);
}

std::string range(const FaultRow& row) {
    return std::to_string(row.least) + " to " + std::to_string(row.most);
}

int numberBehindColon(const FaultRow& row, int value) {
    if (row.colon == Colon::nothing)
        throw std::invalid_argument(std::string(row.name) + " takes no number behind a colon");
    if (value < row.least || value > row.most)
        throw std::invalid_argument(std::string(row.name) + ":" + std::to_string(value) +
                                    " is out of range; it takes " + range(row));
    return value;
}

/// What one of the grammar's numbers tells.
std::size_t counted(const std::string& text) {
    const auto value = wholeNumber(text);
    if (!value || *value > kMostCounted)
        throw std::invalid_argument(text + " is too large a number; the most is " + std::to_string(kMostCounted));
    return static_cast<std::size_t>(*value);
}

FaultOrder parsed(const std::string& text) {
    static const std::string kNumber = "(0x[0-9a-fA-F]+|[0-9]+)";
    static const std::regex kGrammar("([a-z-]+?)(?::" + kNumber + ")?(?:@(h?)" + kNumber + ")?(?:x(" + kNumber +
                                     "|all))?");
    static const std::regex kNumberOrCount("[:@h]0x[0-9]+$");  // "@0x2" is 2, or 0 and the count 2
    std::smatch part;
    if (text.size() > kLongestOrder || !std::regex_match(text, part, kGrammar))
        throw std::invalid_argument("expected NAME[:NUMBER][@AFTER][xCOUNT]");
    const auto row = std::ranges::find(kFaults, part.str(1), &FaultRow::name);
    if (row == std::end(kFaults)) {
        std::string names;
        for (const FaultRow& known : kFaults)
            names += (names.empty() ? "" : ", ") + std::string(known.name);
        throw std::invalid_argument("no such fault; there are " + names);
    }

    if (row->takesCount && (part[4].matched || row->least == 0) && std::regex_search(text, kNumberOrCount))
        throw std::invalid_argument(
            "its 0x may begin a number or be 0 and a count; write the number in decimal, or leave the 0 out");

    FaultOrder order{row->fault};
    if (part[2].matched) {
        const int number = numberBehindColon(*row, static_cast<int>(counted(part.str(2))));
        if (row->colon == Colon::count)
            order.count = static_cast<std::size_t>(number);
        else
            order.parameter = number;
    }
    if (part[4].matched)
        (part.length(3) != 0 ? order.afterHandshakes : order.after) = counted(part.str(4));
    if (part[5].matched) {
        if (!row->takesCount)
            throw std::invalid_argument(std::string(row->name) + " takes no count behind an x");
        order.count = part.str(5) == "all" ? kForEver : counted(part.str(5));
        if (order.count == 0)
            throw std::invalid_argument("the count behind the x is 1 or more, or all");
    }
    return order;
}

}  // namespace

FaultOrder faultOrder(std::string_view text) {
    try {
        return parsed(std::string(text));
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument("fault \"" + std::string(text) + "\": " + error.what());
    }
}

std::string faultHelp() {
    std::string help =
        "Faults: NAME[:N][@AFTER][xCOUNT]\n"
        "  @AFTER   begin after that many requests; @hAFTER: after that many handshakes\n"
        "  xCOUNT   spoil that many answers, xall every one; without it, one\n"
        "  Numbers are decimal, or hexadecimal behind 0x.\n";
    for (const FaultRow& row : kFaults) {
        std::string name(row.name);
        if (row.colon != Colon::nothing)
            name += ":N";
        name.resize(20, ' ');
        help += "  " + name + std::string(row.help);
        if (row.colon != Colon::nothing)
            help += " (" + range(row) + ", default " + std::to_string(row.byDefault) + ")";
        help += "\n";
    }
    return help;
}

void Faults::add(const FaultOrder& order) {
    if (order.parameter) {
        const FaultRow& row = rowOf(order.fault);
        if (row.colon != Colon::parameter)
            throw std::invalid_argument(std::string(row.name) + " takes no parameter");
        numberBehindColon(row, *order.parameter);
    }
    pending_.push_back({order});
}

bool Faults::Pending::applies() {
    if (order.count == 0 || requests < order.after || handshakes < order.afterHandshakes)
        return false;
    if (order.count != kForEver && order.fault != Fault::silent)
        --order.count;
    return true;
}

AnswerFaults Faults::atRequest(bool setsSpeed) {
    AnswerFaults faults;
    for (Pending& pending : pending_) {
        const bool concerns =
            pending.order.fault == Fault::lostRate ? setsSpeed : pending.order.fault != Fault::ignoreHandshake;
        const bool applies = concerns && pending.applies();
        ++pending.requests;
        if (!applies)
            continue;
        const int parameter = pending.order.parameter.value_or(rowOf(pending.order.fault).byDefault);
        switch (pending.order.fault) {
            case Fault::ignore:
            case Fault::silent:
                faults.ignored = true;
                break;
            case Fault::ignoreHandshake:
                break;
            case Fault::wrongType:
                faults.wrongType = true;
                break;
            case Fault::typeZero:
                faults.typeZero = true;
                break;
            case Fault::aux:
                faults.aux = static_cast<std::uint8_t>(parameter);
                break;
            case Fault::cutInfo:
                faults.infoBytes = static_cast<std::size_t>(parameter);
                break;
            case Fault::noChecksum:
                faults.noChecksum = true;
                break;
            case Fault::wrongChecksum:
                faults.wrongChecksum = true;
                break;
            case Fault::garbage:
                faults.garbageBytes = static_cast<std::size_t>(parameter);
                break;
            case Fault::lostRate:
                faults.lostRate = true;
                break;
            case Fault::delay:
                faults.delay = Micros{parameter} * 1000;
                break;
            case Fault::unplug:
                faults.unplugged = true;
                break;
        }
    }
    return faults;
}

bool Faults::ignoresHandshake() {
    bool ignored = false;
    for (Pending& pending : pending_) {
        const bool aboutHandshakes =
            pending.order.fault == Fault::ignoreHandshake || pending.order.fault == Fault::silent;
        ignored |= aboutHandshakes && pending.applies();
        ++pending.handshakes;
    }
    return ignored;
}

std::vector<std::uint8_t> spoiled(Frame answer, const AnswerFaults& faults) {
    if (faults.wrongType)
        ++answer.type;
    if (faults.typeZero) {
        answer.type = 0;
        answer.data.clear();
    }
    if (faults.aux)
        answer.aux1 = *faults.aux;

    auto bytes = wireBytes(answer);
    if (faults.wrongChecksum)
        ++bytes.back();
    if (faults.noChecksum)
        bytes.pop_back();
    if (faults.infoBytes && *faults.infoBytes < answer.data.size())
        bytes.resize(bytes.size() - (answer.data.size() - *faults.infoBytes) - (faults.noChecksum ? 0 : 1));
    bytes.insert(bytes.begin(), faults.garbageBytes, kGarbage);
    return bytes;
}

}  // namespace opane::simulator
