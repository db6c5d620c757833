#include "shared/mdlConstantes.h"

#include <atomic>
#include <map>
#include <mutex>

#include "shared/runtime_error.h"

namespace opane {
namespace {

// A thread finds its set by number: a plain thread_local with nothing to destroy (a destructor would pin the library
// in its process), and a number that is never used twice stays harmless after its set has ended on another thread.
// The lock guards this register and the references in the sets.
using SetNumber = std::uint64_t;
using Register = std::map<SetNumber, std::weak_ptr<Globals>>;

thread_local SetNumber threadSetNumber = 0;

std::mutex registerMutex;
Register* registerOfSets = nullptr;  // there only while it has entries, so that an unloaded library leaves nothing

void forget(SetNumber number) {
    const std::lock_guard lock(registerMutex);
    if (registerOfSets == nullptr)
        return;
    registerOfSets->erase(number);
    if (registerOfSets->empty()) {
        delete registerOfSets;
        registerOfSets = nullptr;
    }
}

std::shared_ptr<Globals> makeThreadSet() {
    static std::atomic<SetNumber> lastSetNumber = 0;
    const SetNumber number = ++lastSetNumber;
    // Before the lock: when memory runs out below, the set's end takes the lock itself.
    std::shared_ptr<Globals> set(new Globals, [number](Globals* ended) {
        forget(number);
        delete ended;
    });
    const std::lock_guard lock(registerMutex);
    if (registerOfSets == nullptr)
        registerOfSets = new Register;
    (*registerOfSets)[number] = set;
    threadSetNumber = number;
    return set;
}

}  // namespace

GlobalsHolder::GlobalsHolder() : globals_(threadGlobals()) {
    if (!globals_)
        globals_ = makeThreadSet();
}

GlobalsHolder::~GlobalsHolder() {
    // Moved out first, as their ends may run host events, which must find the references empty. The link ends before
    // the log. Under the lock, as this may be another thread than the set's own.
    std::shared_ptr<clsLog> log;
    std::shared_ptr<clsOPane> link;
    const std::lock_guard lock(registerMutex);
    log = std::move(globals_->gobjLog);
    link = std::move(globals_->gobjOPane);
}

void GlobalsHolder::adopt(std::shared_ptr<clsOPane> link) {
    const std::lock_guard lock(registerMutex);
    globals_->gobjOPane.swap(link);
}

void GlobalsHolder::adopt(std::shared_ptr<clsLog> log) {
    const std::lock_guard lock(registerMutex);
    globals_->gobjLog.swap(log);
}

std::shared_ptr<clsOPane> GlobalsHolder::link() const {
    const std::lock_guard lock(registerMutex);
    return globals_->gobjOPane;
}

std::shared_ptr<Globals> threadGlobals() {
    const std::lock_guard lock(registerMutex);
    if (registerOfSets == nullptr)
        return nullptr;
    const auto found = registerOfSets->find(threadSetNumber);
    return found == registerOfSets->end() ? nullptr : found->second.lock();
}

std::shared_ptr<clsOPane> threadLink() {
    if (const auto set = threadGlobals()) {
        const std::lock_guard lock(registerMutex);
        if (set->gobjOPane)
            return set->gobjOPane;
    }
    throw RuntimeError(ErrorNumber::objectNotSet, "this thread has no link: its object has ended");
}

std::shared_ptr<clsLog> threadLog() {
    const auto set = threadGlobals();
    const std::lock_guard lock(registerMutex);
    return set ? set->gobjLog : nullptr;
}

}  // namespace opane
