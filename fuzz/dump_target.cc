// Stores that other programs wrote into: what a dump of them says must be what they hold. An input is a sequence of
// changes of a store with a policy, parted by 0xFF: a byte that says what is done, one for the key, one for the name,
// and the text.
#include <iterator>
#include <optional>
#include <string>

#include "bytes.h"
#include "fail.h"
#include "policy/policy_reader.h"
#include "policy/policy_writer.h"
#include "policy_checks.h"
#include "stored/policy_store_reader.h"
#include "support/store_dump.h"

namespace {

constexpr int kMostChanges = 24;

constexpr const char* kBase = R"yaml(zxpolicy: 1
lists: [{name: L, addresses: [a@b.c, "*@d.e"]}, {name: D, type: directory, server: s, password: p}]
classifications: [{name: C, actions: [{name: m, actionType: 3, setting: {k: {v: 1}}}, {name: n}]}]
exclusiveFilters: [{filter: 26, priority: desc}]
root:
  conditions: [{sender: "*", receiver: "*"}]
  tasks: [{name: t, overridable: true, outcomes: {o: C}, setting: {a: x, b: [p, q]}}, {name: u}]
  rules:
    - name: A
      conditions: [{sender: "*@a.b", receiver: "(L)"}, {sender: "*@a.b", receiver: "x@y.z"}]
      inactive: ['\t']
      tasks: [{name: v, filter: 26}]
      rules: [{name: B, conditions: [{sender: "*@a.b", receiver: "x@y.z"}]}]
    - name: E
      conditions: [{sender: "*", receiver: "*"}]
)yaml";

// The first is the store's own key.
constexpr const char* kKeys[] = {"",
                                 "AddressList",
                                 "AddressList\\L",
                                 "AddressList\\D",
                                 "Classification",
                                 "Classification\\C",
                                 "Classification\\C\\actions",
                                 "Classification\\C\\actions\\m",
                                 "Classification\\C\\actions\\m\\setting",
                                 "Rule",
                                 "Rule\\Mail",
                                 "Rule\\Mail\\inactive",
                                 "Rule\\Mail\\rules",
                                 "Rule\\Mail\\rules\\A",
                                 "Rule\\Mail\\rules\\A\\inactive",
                                 "Rule\\Mail\\rules\\A\\tasks\\v",
                                 "Rule\\Mail\\rules\\A\\rules\\B",
                                 "Rule\\Mail\\rules\\E",
                                 "Rule\\Mail\\tasks",
                                 "Rule\\Mail\\tasks\\t",
                                 "Rule\\Mail\\tasks\\t\\Classification",
                                 "Rule\\Mail\\tasks\\t\\setting",
                                 "Rule\\Mail\\tasks\\u",
                                 "Rule\\Mail\\tasks\\u\\setting"};

// The empty name stands for the beginning of the text, up to a line feed.
constexpr const char* kNames[] = {"",
                                  "order",
                                  "comment",
                                  "displayName",
                                  "matchType",
                                  "condition1",
                                  "condition2",
                                  "condition3",
                                  "inactive1",
                                  "inactive2",
                                  "filter",
                                  "enable",
                                  "overridable",
                                  "type",
                                  "address1",
                                  "address2",
                                  "server",
                                  "port",
                                  "password",
                                  "actionType",
                                  "version",
                                  "ExcluId0000001a",
                                  "ExcluId00000007",
                                  "setting",
                                  "rules",
                                  "tasks",
                                  "X",
                                  "o"};

tool::KeyHandle opened(const tool::Store& store, unsigned choice) {
    int error = ZXREG_S_OK;
    return tool::KeyHandle(zxreg_openKey(store.key(), kKeys[choice % std::size(kKeys)], &error));
}

// A number is written as four bytes, whatever the text is.
void write(const tool::KeyHandle& key, const std::string& name, unsigned type, const std::string& text) {
    int error = ZXREG_S_OK;
    std::string data = type == ZXREG_NUMBER ? (text + std::string(4, '\0')).substr(0, 4) : text;
    if (type == ZXREG_STRING || type == ZXREG_PROTECTED_STRING) data += '\0';
    zxreg_setValue(key.get(), name.c_str(), type, data.data(), static_cast<uint32_t>(data.size()), &error);
}

void change(const tool::Store& store, const std::string& part) {
    fuzz::Bytes bytes(reinterpret_cast<const uint8_t*>(part.data()), part.size());
    const unsigned action = bytes.byte();
    const tool::KeyHandle key = opened(store, bytes.byte());
    if (!key) return;
    std::string name = kNames[bytes.byte() % std::size(kNames)];
    if (name.empty()) name = fuzz::upToNul(bytes.until('\n'));
    int error = ZXREG_S_OK;
    if (action % 8 < 5)
        write(key, name, action % 8 < 4 ? action % 4 : ZXREG_STRING, bytes.rest());
    else if (action % 8 == 5)
        zxreg_deleteValue(key.get(), name.c_str(), &error);
    else if (action % 8 == 6)
        tool::KeyHandle(zxreg_createKey(key.get(), name.c_str(), &error));
    else
        zxreg_deleteKey(key.get(), name.c_str(), &error);
}

// What a store holds that the policy was applied to: made once, as applying takes long.
const zxtest::StoredKey& baseContent(const tool::Policy& base) {
    static const zxtest::StoredKey content = [&] {
        const tool::Store store("memory:", tool::Store::Missing::Create);
        fuzz::require(fuzz::apply(store, base), "the policy is refused");
        fuzz::checkStored(store, base);
        return zxtest::readStore(store.key());
    }();
    return content;
}

// What the store holds, unless it cannot be read or no file can say it.
std::optional<tool::Policy> dumped(const tool::Store& store) {
    try {
        const tool::StoredPolicy stored = tool::readPolicySnapshot(store, tool::Secrets::Read);
        for (const std::string& problem : stored.problems)
            fuzz::require(problem.find('\n') == std::string::npos, "a problem is more than one line");
        if (!stored.problems.empty()) return std::nullopt;
        tool::Policy again = tool::readPolicy("the dump", tool::writePolicy(stored.policy));
        if (!tool::firstDifference(again, stored.policy).empty()) return std::nullopt;
        return again;
    } catch (const tool::ToolError& error) {
        fuzz::requireOneLine(error);
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const tool::Policy base = tool::readPolicy("p", kBase);
    fuzz::Bytes bytes(data, size);
    const tool::Store store("memory:", tool::Store::Missing::Create);
    zxtest::writeStore(store.key(), baseContent(base));
    for (int changes = 0; !bytes.isEmpty() && changes < kMostChanges; ++changes)
        change(store, bytes.until('\xFF'));
    const std::optional<tool::Policy> policy = dumped(store);
    if (policy) {
        fuzz::checkStored(store, *policy);
        const tool::Store fresh("memory:", tool::Store::Missing::Create);
        fuzz::require(fuzz::apply(fresh, *policy), "a fresh store does not take the dump");
        fuzz::checkStored(fresh, *policy);
        fuzz::forgetLists(*policy);
    }
    // Whatever the store holds: another policy either replaces it wholly, or changes nothing.
    if (fuzz::apply(store, base)) fuzz::checkStored(store, base);
    fuzz::forgetLists(base);
    return 0;
}
