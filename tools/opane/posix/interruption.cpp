#include "tools/opane/interruption.h"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace opane {
namespace {

struct Taken {
    int number;
    const char* name;
    struct sigaction before;
    bool isTaken;
};

std::array<Taken, 4> taken{{{SIGINT, "SIGINT", {}, false},
                            {SIGTERM, "SIGTERM", {}, false},
                            {SIGHUP, "SIGHUP", {}, false},
                            {SIGALRM, "", {}, false}}};
/// What a write would end the program by; it fails instead.
std::array<Taken, 2> ignored{{{SIGPIPE, "", {}, false}, {SIGXFSZ, "", {}, false}}};
sigset_t maskBefore;
std::atomic<Cancellation*> cancelled = nullptr;
std::atomic<int> causeNumber = 0;

void takeSignal(int number) {
    int none = 0;
    if (number != SIGALRM)
        causeNumber.compare_exchange_strong(none, number);  // the first one is the cause
    Cancellation* const cancellation = cancelled;
    if (cancellation == nullptr)
        return;
    cancellation->cancel();
    alarm(1);  // a write that begins to wait from now on is ended too
}

}  // namespace

Interruption::Interruption(Cancellation& cancellation, std::int32_t limitMs) {
    causeNumber = 0;
    cancelled = &cancellation;
    struct sigaction ignoring {};
    ignoring.sa_handler = SIG_IGN;
    for (Taken& row : ignored)
        sigaction(row.number, &ignoring, &row.before);
    struct sigaction taking {};
    taking.sa_handler = takeSignal;
    taking.sa_flags = 0;  // no restart: what waits for somebody who reads must end
    for (Taken& row : taken) {
        sigaction(row.number, nullptr, &row.before);
        row.isTaken = row.number == SIGALRM || row.before.sa_handler != SIG_IGN;  // the timer is ours
        if (row.isTaken)
            sigaction(row.number, &taking, nullptr);
    }
    sigset_t timer;
    sigemptyset(&timer);
    sigaddset(&timer, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &timer, &maskBefore);
    if (limitMs > 0) {
        itimerval limit{};
        limit.it_value = {limitMs / 1000, limitMs % 1000 * 1000L};
        setitimer(ITIMER_REAL, &limit, nullptr);
    }
}

Interruption::~Interruption() {
    alarm(0);
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    if (causeNumber == 0) {  // else the program is ending, and another one must not keep it from saying why
        for (const Taken& row : taken) {
            if (row.isTaken)
                sigaction(row.number, &row.before, nullptr);
        }
    }
    for (const Taken& row : ignored)
        sigaction(row.number, &row.before, nullptr);
    cancelled = nullptr;
}

std::string Interruption::cause() {
    for (const Taken& row : taken) {
        if (row.number == causeNumber)
            return row.name;
    }
    return {};
}

}  // namespace opane
