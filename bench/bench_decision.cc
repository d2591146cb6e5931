// One decision: a mail with one receiver against a tree of rules, each with two conditions. The counter ns_per_rule is
// the processor time divided by the rules that the decision checks, which are counted beforehand by their debug
// messages.
//
// Trees: "flat" has all rules below the root, "deep" ten below each rule, "chain" one below each. Of siblings the last
// one matches mails to all.example, the others and all other mails match nothing but the root. So first match of
// another mail checks every rule, and best match of one to all.example goes down to the last leaf.
//
// The rows "told" and "kept" are the same decisions with an observer that does nothing with the steps, and with one
// that keeps what they say. Beside the plain row of the same policy they show what watching costs.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zxpolicy.h"
#include "zxpolicy_explain.h"
#include "zxregistry.h"

namespace {

void require(int error, const char* what) {
    if (error >= 0) return;
    std::fprintf(stderr, "%s: %08x %s\n", what, static_cast<unsigned>(error), zxreg_lastErrorText());
    std::_Exit(3);
}

struct HandleCloser {
    void operator()(_ZxPolComHandle* handle) const {
        int error = ZXPOL_S_OK;
        switch (handle->kind) {
            case ZXPOL_HANDLE_RULE_HIVE:
                return zxpol_closeRuleHive(handle, &error);
            case ZXPOL_HANDLE_ADDRLIST_HIVE:
                return zxpol_closeAddrListHive(handle, &error);
            default:
                return zxreg_closeKey(handle, &error);
        }
    }
};
using Handle = std::unique_ptr<_ZxPolComHandle, HandleCloser>;

// ---- making policies --------------------------------------------------------------------------------------

Handle makeKey(const Handle& parent, const std::string& name) {
    int error = ZXREG_S_OK;
    Handle key(zxreg_createKey(parent.get(), name.c_str(), &error));
    require(error, name.c_str());
    return key;
}

void setText(const Handle& key, const char* name, const std::string& text) {
    int error = ZXREG_S_OK;
    zxreg_setValue(key.get(), name, ZXREG_STRING, text.c_str(), static_cast<uint32_t>(text.size() + 1), &error);
    require(error, name);
}

void setNumber(const Handle& key, const char* name, uint32_t number) {
    int error = ZXREG_S_OK;
    zxreg_setValue(key.get(), name, ZXREG_NUMBER, &number, sizeof number, &error);
    require(error, name);
}

// Writes a rule as the library lays it out and returns the key of its children.
Handle makeRule(const Handle& siblings, int number, uint32_t order, bool isLast) {
    const std::string name = "rule" + std::to_string(number);
    const Handle rule = makeKey(siblings, name);
    setText(rule, "comment", "");
    setText(rule, "displayName", "The rule of department " + std::to_string(number));
    setNumber(rule, "matchType", 0);
    setNumber(rule, "order", order);
    setText(rule, "condition1", "*,*@" + name + ".example.com");
    setText(rule, "condition2", isLast ? "*,*@all.example" : "*,*@*." + name + ".example.com");
    makeKey(rule, "inactive");
    makeKey(rule, "tasks");
    return makeKey(rule, "rules");
}

// Adds `count` rules below the root, level by level, `fanOut` below each.
void makeRules(const Handle& store, int count, int fanOut) {
    int error = ZXREG_S_OK;
    std::vector<Handle> levels;
    levels.push_back(makeKey(store, "Rule\\Mail\\rules"));
    zxreg_beginUpdate(store.get(), &error);
    require(error, "begin");
    for (int number = 0; number < count; ++number) {
        const auto order = static_cast<uint32_t>(number % fanOut + 1);
        const bool isLast = number % fanOut == fanOut - 1 || number == count - 1;
        levels.push_back(makeRule(levels[static_cast<size_t>(number / fanOut)], number, order, isLast));
    }
    zxreg_endUpdate(store.get(), &error);
    require(error, "end");
}

// A store with its hives open.
struct Policy {
    Policy(const std::string& location, int count, int fanOut) {
        int error = ZXREG_S_OK;
        store.reset(zxreg_openStore(location.c_str(), &error));
        require(error, location.c_str());
        rules.reset(zxpol_openRuleHive(store.get(), 0, &error));
        lists.reset(zxpol_openAddrListHive(store.get(), &error));
        require(error, "hives");
        makeRules(store, count, fanOut);
    }
    Handle store;
    Handle rules;
    Handle lists;
};

// The policies made so far, and the folder of their files; gone with the program.
class Policies {
public:
    Policies() {
        if (mkdtemp(_folder) == nullptr) require(ZXREG_E_IO, _folder);
    }
    ~Policies() {
        for (auto& [location, policy] : _made) {
            policy.reset();
            const std::string path = location.substr(location.find(':') + 1);
            for (const char* suffix : {"", "-wal", "-shm"})
                std::remove((path + suffix).c_str());
        }
        rmdir(_folder);
    }
    Policies(const Policies&) = delete;
    Policies& operator=(const Policies&) = delete;

    const Policy& get(const std::string& engine, const std::string& tree, int count) {
        const std::string name = tree + std::to_string(count);
        const std::string location = engine + (engine == "memory:" ? name : std::string(_folder) + "/" + name);
        std::unique_ptr<Policy>& policy = _made[location];
        const int fanOut = tree == "flat" ? count : tree == "deep" ? 10 : 1;
        if (policy == nullptr) policy = std::make_unique<Policy>(location, count, fanOut);
        return *policy;
    }

private:
    char _folder[32] = "/tmp/zxpolicy-bench-XXXXXX";
    std::map<std::string, std::unique_ptr<Policy>> _made;
};

// ---- deciding ---------------------------------------------------------------------------------------------

// What is done with the steps of a decision.
enum class Observer { None, Ignores, Records };

void ignoreStep(void* /*context*/, const _ZxPolMatchStep* /*step*/) {}

void recordStep(void* context, const _ZxPolMatchStep* step) {
    std::string record = std::to_string(step->kind);
    for (const char* text : {step->rulePath, step->pattern, step->address, step->taskPath})
        if (text != nullptr) record.append(1, ' ').append(text);
    static_cast<std::vector<std::string>*>(context)->push_back(std::move(record));
}

void decide(const Policy& policy, uint32_t mode, const char* receiver, Observer observer = Observer::None) {
    const char* sender = "sender@elsewhere.example";
    const char* receivers[] = {receiver, nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    std::vector<std::string> records;
    if (observer == Observer::None)
        zxpol_matchRuleByMailInfoEx(policy.rules.get(), policy.lists.get(), mode, sender, receivers, &pairs, &count,
                                    &error);
    else
        zxpol_explainMatch(policy.rules.get(), policy.lists.get(), mode, sender, receivers,
                           observer == Observer::Ignores ? &ignoreStep : &recordStep, &records, &pairs, &count, &error);
    benchmark::DoNotOptimize(records);
    require(count == 1 ? error : ZXPOL_E_EXCEPTION, "match");
    zxpol_freeMatchPair(pairs, count, &error);
}

int checkedRules = 0;

void countCheckedRule(const char* message) {
    constexpr const char kBeginning[] = "Checking rule ";
    if (std::strncmp(message, kBeginning, sizeof kBeginning - 1) == 0) ++checkedRules;
}

int rulesCheckedBy(const Policy& policy, uint32_t mode, const char* receiver) {
    int error = ZXPOL_S_OK;
    checkedRules = 0;
    zxpol_setDebugFunction(&countCheckedRule, &error);
    decide(policy, mode, receiver);
    zxpol_setDebugFunction(nullptr, &error);
    return checkedRules;
}

double processorNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

void runDecision(benchmark::State& state, const Policy& policy, uint32_t mode, const char* receiver,
                 Observer observer) {
    const int checked = rulesCheckedBy(policy, mode, receiver);
    const double begin = processorNanoseconds();
    for ([[maybe_unused]] auto iteration : state)
        decide(policy, mode, receiver, observer);
    const double taken = processorNanoseconds() - begin;
    state.counters["rules"] = checked;
    state.counters["ns_per_rule"] = taken / static_cast<double>(state.iterations()) / checked;
}

void registerTree(Policies& policies, const std::string& engine, const std::string& tree, int count,
                  Observer observer = Observer::None) {
    const char* const suffixes[] = {"", "/told", "/kept"};
    for (const uint32_t mode : {0u, 1u}) {
        const std::string name = std::string("Decision/") + (mode == 0 ? "first/" : "best/") +
                                 engine.substr(0, engine.find(':')) + "/" + tree + "/" + std::to_string(count) +
                                 suffixes[static_cast<size_t>(observer)];
        benchmark::RegisterBenchmark(
            name.c_str(), [&policies, engine, tree, count, mode, observer](benchmark::State& state) {
                const char* receiver = mode == 0 ? "someone@nowhere.example" : "someone@all.example";
                runDecision(state, policies.get(engine, tree, count), mode, receiver, observer);
            });
    }
}

}  // namespace

int main(int argc, char** argv) {
    Policies policies;
    for (const char* engine : {"memory:", "sqlite:"}) {
        for (const char* tree : {"flat", "deep"}) {
            for (const int count : {10, 100, 1000, 10000})
                registerTree(policies, engine, tree, count);
        }
        registerTree(policies, engine, "chain", 1000);
        for (const Observer observer : {Observer::Ignores, Observer::Records})
            registerTree(policies, engine, "flat", 1000, observer);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
