// The fixture of tests that go through the flat interface: a store with both hives open, and terse ways to
// build a policy, to look at it and to match mails against it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/store_fixture.h"

namespace zxtest {

// Copies `text` with its NUL into a field of a record; what does not fit is cut.
template <size_t N>
void setField(char (&field)[N], const std::string& text) {
    std::memset(field, 0, N);
    text.copy(field, N - 1);
}

inline _ZxPolAddrPairCond pairOf(const std::string& sender, const std::string& receiver) {
    _ZxPolAddrPairCond pair = {};
    setField(pair.sender, sender);
    setField(pair.receiver, receiver);
    return pair;
}
inline const unsigned char* asCondition(const _ZxPolAddrPairCond& pair) {
    return reinterpret_cast<const unsigned char*>(&pair);
}

// A list of conditions as it crosses the interface, closed by a null pointer.
class Conditions {
public:
    using Pair = std::pair<std::string, std::string>;
    Conditions(std::initializer_list<Pair> pairs) {
        for (const Pair& pair : pairs)
            _pairs.push_back(pairOf(pair.first, pair.second));
        for (const _ZxPolAddrPairCond& pair : _pairs)
            _list.push_back(asCondition(pair));
        _list.push_back(nullptr);
    }
    Conditions(const Conditions&) = delete;
    Conditions& operator=(const Conditions&) = delete;
    const unsigned char** list() const { return const_cast<const unsigned char**>(_list.data()); }

private:
    std::vector<_ZxPolAddrPairCond> _pairs;
    std::vector<const unsigned char*> _list;
};

// Records the debug messages of the library as long as it lives.
class DebugMessages {
public:
    DebugMessages() {
        texts().clear();
        int error = ZXPOL_S_OK;
        zxpol_setDebugFunction(&DebugMessages::record, &error);
    }
    ~DebugMessages() {
        int error = ZXPOL_S_OK;
        zxpol_setDebugFunction(nullptr, &error);
    }
    DebugMessages(const DebugMessages&) = delete;
    DebugMessages& operator=(const DebugMessages&) = delete;

    const std::vector<std::string>& all() const { return texts(); }
    long count(const std::string& text) const { return std::count(texts().begin(), texts().end(), text); }

private:
    static std::vector<std::string>& texts() {
        static std::vector<std::string> recorded;
        return recorded;
    }
    static void record(const char* message) { texts().emplace_back(message); }
};

// How a task is made.
struct TaskSpec {
    uint32_t filter = 0;
    int32_t enable = 1;
    int32_t overridable = 0;
    uint32_t order = 0;
};

inline _ZxPolTaskAttr taskAttr(const std::string& displayName, const TaskSpec& spec = {}) {
    _ZxPolTaskAttr attr = {};
    setField(attr.displayName, displayName);
    attr.order = spec.order;
    attr.filter = spec.filter;
    attr.enable = spec.enable;
    attr.overridable = spec.overridable;
    return attr;
}

inline std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

class PolicyTest : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        if (HasFatalFailure()) return;
        openHives();
    }

    void TearDown() override {
        const _ZxPolMatchOption initial = {1, 0, 0, 0, 0};
        int error = ZXPOL_S_OK;
        zxpol_setMatchOption(&initial, &error);
        closeHives();
        StoreTest::TearDown();
    }

    void openHives() {
        int error = ZXPOL_S_OK;
        _ruleHive.reset(zxpol_openRuleHive(store(), 0, &error));
        _listHive.reset(zxpol_openAddrListHive(store(), &error));
        ASSERT_GE(error, 0) << codeText(error);
    }
    void closeHives() {
        _ruleHive.reset();
        _listHive.reset();
    }

    _ZxPolComHandle* ruleHive() const { return _ruleHive.get(); }
    _ZxPolComHandle* listHive() const { return _listHive.get(); }

    // ---- building ------------------------------------------------------------------------------

    // Opens the rule with the full path `path`.
    Handle rule(const std::string& path = "\\") const {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openRuleByFullName(ruleHive(), path.c_str(), &error));
        EXPECT_TRUE(found != nullptr) << path << ": " << codeText(error);
        return found;
    }

    // Creates a child of the rule at `parent`, with the one condition given; its display name is its name.
    void addRule(const std::string& parent, const std::string& name, const std::string& sender = "*",
                 const std::string& receiver = "*") const {
        _ZxPolRuleAttr attr = {};
        setField(attr.displayName, name);
        const Conditions conditions{{sender, receiver}};
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createRule(rule(parent).get(), name.c_str(), &attr, conditions.list(), &error));
        EXPECT_TRUE(made != nullptr) << parent << " " << name << ": " << codeText(error);
    }

    // Creates a task of the rule at `path`; its display name is its name.
    void addTask(const std::string& path, const std::string& name, const TaskSpec& spec = {}) const {
        _ZxPolTaskAttr attr = taskAttr(name, spec);
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createTask(rule(path).get(), name.c_str(), &attr, &error));
        EXPECT_TRUE(made != nullptr) << path << " " << name << ": " << codeText(error);
    }
    void addTasks(const std::string& path, std::initializer_list<const char*> names) const {
        for (const char* name : names)
            addTask(path, name);
    }

    // Adds a condition without looking at other rules; returns the result code.
    int addCondition(const std::string& path, const std::string& sender, const std::string& receiver) const {
        const _ZxPolAddrPairCond pair = pairOf(sender, receiver);
        int error = ZXPOL_S_OK;
        zxpol_addCondition(rule(path).get(), asCondition(pair), &error);
        return error;
    }

    // Marks the task as inactive in the rule at `path`.
    void inactivate(const std::string& path, const std::string& taskFullName) const {
        int error = ZXPOL_S_OK;
        zxpol_inactivateTask(rule(path).get(), taskFullName.c_str(), 0, &error);
        EXPECT_GE(error, 0) << codeText(error);
    }

    void setExclusive(uint32_t filter, ZxPolFilterPriorityType type) const {
        int error = ZXPOL_S_OK;
        zxpol_setExclusiveFilterType(ruleHive(), filter, type, &error);
        EXPECT_GE(error, 0) << codeText(error);
    }

    void addDirectoryList(const std::string& name) const {
        _ZxPolAddrListAttr attr = {};
        attr.type = ZXPOL_ADDRLIST_DIRECTORY;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAddrList(listHive(), name.c_str(), &attr, &error));
        EXPECT_TRUE(made != nullptr) << name << ": " << codeText(error);
    }

    // ---- looking -------------------------------------------------------------------------------

    // Where the rule with the full path `path` lies in the store.
    static std::string keyOf(const std::string& path) {
        std::string key = "Rule\\Mail";
        for (size_t at = 0; path.size() > 1 && at != std::string::npos;) {
            const size_t next = path.find('\\', at + 1);
            key += "\\rules\\" + path.substr(at + 1, next - at - 1);
            at = next;
        }
        return key;
    }
    RawKey rawRule(const std::string& path = "\\") const { return raw(keyOf(path)); }

    // The children of a key with their stored positions, by position: "a1 b2 c-" ("-" for none).
    std::string orders(const std::string& keyPath) const {
        const RawKey container = raw(keyPath);
        std::vector<std::pair<uint32_t, std::string>> found;
        for (const std::string& name : container.subkeys()) {
            const std::optional<uint32_t> order = RawKey(container.handle(), name).number("order");
            found.emplace_back(order.value_or(~0u), name + (order ? std::to_string(*order) : "-"));
        }
        std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<std::string> words;
        for (const auto& [order, word] : found)
            words.push_back(word);
        return joined(words);
    }

    using NameEnumeration = void (*)(_ZxPolComHandle*, uint32_t, char*, uint32_t*, int*);

    // The names that an enumeration yields from index 0 to its end, which must be the end of the items.
    static std::string names(NameEnumeration enumerate, _ZxPolComHandle* handle) {
        std::vector<std::string> found;
        for (uint32_t index = 0;; ++index) {
            char name[ZXPOL_NAME_SIZE];
            uint32_t size = sizeof name;
            int error = ZXPOL_S_OK;
            enumerate(handle, index, name, &size, &error);
            if (error < 0) {
                EXPECT_EQ(12u, reasonOf(error)) << codeText(error);
                return joined(found);
            }
            found.emplace_back(name);
        }
    }

    // The conditions of a rule as the interface enumerates them, each as "sender -> receiver".
    static std::vector<std::string> conditionsOf(_ZxPolComHandle* rule) {
        std::vector<std::string> found;
        for (uint32_t index = 0;; ++index) {
            _ZxPolAddrPairCond pair = {};
            uint32_t size = sizeof pair;
            int error = ZXPOL_S_OK;
            zxpol_enumCondition(rule, index, reinterpret_cast<unsigned char*>(&pair), &size, &error);
            if (error < 0) {
                EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                return found;
            }
            found.push_back(std::string(pair.sender) + " -> " + pair.receiver);
        }
    }
    std::vector<std::string> conditionsOf(const std::string& path) const { return conditionsOf(rule(path).get()); }

    // ---- matching ------------------------------------------------------------------------------

    // The result of a match: its code, and one line for each matched rule, "path: receivers | tasks", tasks by
    // their display names.
    struct MatchResult {
        int code = ZXPOL_S_OK;
        std::vector<std::string> lines;
    };

    MatchResult match(const std::string& sender, std::initializer_list<const char*> receivers,
                      uint32_t mode = 0) const {
        std::vector<const char*> list(receivers);
        list.push_back(nullptr);
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        MatchResult result;
        zxpol_matchRuleByMailInfoEx(ruleHive(), listHive(), mode, sender.c_str(), list.data(), &pairs, &count,
                                    &result.code);
        for (uint32_t at = 0; at < count; ++at)
            result.lines.push_back(lineOf(pairs[at]));
        int error = ZXPOL_S_OK;
        zxpol_freeMatchPair(pairs, count, &error);
        return result;
    }

    // The lines of a match that must succeed.
    std::vector<std::string> matched(const std::string& sender, std::initializer_list<const char*> receivers,
                                     uint32_t mode = 0) const {
        MatchResult result = match(sender, receivers, mode);
        EXPECT_CODE(ZXPOL_S_OK, result.code);
        return std::move(result.lines);
    }

    static std::string lineOf(const _ZxPolMatchPair& pair) {
        std::string line = std::string(pair.rulePath) + ":";
        for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver)
            line += std::string(" ") + *receiver;
        line += " |";
        for (uint32_t at = 0; at < pair.taskCount; ++at)
            line += " " + displayNameOf(pair.tasks[at]);
        return line;
    }

    static std::string displayNameOf(_ZxPolComHandle* task) {
        _ZxPolTaskAttr attr = {};
        int error = ZXPOL_S_OK;
        zxpol_getTaskAttrib(task, &attr, &error);
        EXPECT_GE(error, 0) << codeText(error);
        if (attr.setting != nullptr) Handle(attr.setting).reset();
        return attr.displayName;
    }

private:
    Handle _ruleHive;
    Handle _listHive;
};

}  // namespace zxtest
