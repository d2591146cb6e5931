#include "small_policy.h"

#include <algorithm>
#include <atomic>
#include <ostream>

#include "stored/raw_key.h"
#include "tool_error.h"

namespace tool {

namespace {

std::string freshLocation() {
    static std::atomic<uint32_t> number{0};
    return "memory:small-policy-" + std::to_string(number++);
}

// The key of the rule at a path.
std::string keyOf(const std::string& rulePath) {
    std::string key = kRootRuleKey;
    if (rulePath == "\\") return key;
    for (const char c : rulePath)
        key += c == '\\' ? std::string("\\rules\\") : std::string(1, c);
    return key;
}

// The path of what is of that name below a rule.
std::string pathBelow(const std::string& rulePath, const std::string& name) {
    return (rulePath == "\\" ? "" : rulePath) + "\\" + name;
}

// Writes all numbered values of a key anew.
void writeNumbered(_ZxPolComHandle* key, const std::string& prefix, const std::vector<std::string>& texts) {
    int result = ZXPOL_S_OK;
    for (const std::string& name : rawValueNames(key))
        if (isNumbered(name, prefix)) zxreg_deleteValue(key, name.c_str(), &result);
    for (size_t i = 0; i < texts.size(); ++i)
        zxreg_setValue(key, (prefix + std::to_string(i + 1)).c_str(), ZXREG_STRING, texts[i].c_str(),
                       static_cast<uint32_t>(texts[i].size() + 1), &result);
    require(result, "cannot write " + prefix);
}

}  // namespace

SmallPolicy::SmallPolicy(uint32_t seed, SmallPolicyKind kind)
    : _random(seed), _isForeign(kind == SmallPolicyKind::Foreign), _store(freshLocation(), Store::Missing::Create) {
    for (const char* name : {"L", "M", "D"})
        makeList(name);
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(_store.key(), 0, &result));
    const RuleHandle root(zxpol_openRootRule(hive.get(), &result));
    require(result, "cannot make the root");
    _rules.emplace_back("\\");
    // Mostly the root takes every mail.
    if (upTo(3) == 0) writeConditions("\\");
    makeTasks("\\", root);
    makeRules("\\", root, 2);
    for (const std::string& rule : _rules)
        if (upTo(1) == 0) writeMarks(rule);
    makeFilters(hive);
}

void SmallPolicy::change(uint32_t seed) {
    _random.seed(seed);
    if (upTo(2) == 0) fillList(pick({"L", "M"}));
    if (upTo(2) != 0) writeConditions(pick(_rules));
    if (upTo(3) == 0) writeMarks(pick(_rules));
}

void SmallPolicy::removeRule(const std::string& rulePath) {
    const size_t cut = rulePath.rfind('\\');
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(_store.key(), 0, &result));
    const std::string above = cut == 0 ? "\\" : rulePath.substr(0, cut);
    const RuleHandle parent(zxpol_openRuleByFullName(hive.get(), above.c_str(), &result));
    zxpol_deleteRule(parent.get(), rulePath.c_str() + cut + 1, &result);
    require(result, "cannot delete rule " + rulePath);
}

void SmallPolicy::removeCondition(const std::string& rulePath, size_t number) {
    const KeyHandle key = openRawKey(_store.key(), keyOf(rulePath));
    std::vector<std::string> texts;
    for (size_t i = 1;; ++i) {
        const std::string name = "condition" + std::to_string(i);
        const std::vector<std::string> names = rawValueNames(key.get());
        if (std::find(names.begin(), names.end(), name) == names.end()) break;
        if (i != number) texts.push_back(rawText(key.get(), name, rulePath));
    }
    writeNumbered(key.get(), "condition", texts);
}

void SmallPolicy::keepOnlyRoot(const std::string& condition) {
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(_store.key(), 0, &result));
    const RuleHandle root(zxpol_openRootRule(hive.get(), &result));
    for (const std::string& rule : _rules)
        if (rule.rfind('\\') == 0 && rule != "\\") zxpol_deleteRule(root.get(), rule.c_str() + 1, &result);
    require(result, "cannot delete a rule");
    _rules = {"\\"};
    writeNumbered(openRawKey(_store.key(), kRootRuleKey).get(), "condition", {condition});
}

std::string SmallPolicy::address() {
    return pick({"a@a", "b@a", "a@b", "b@a.b", "a@b.b", "a@[a]"});
}

std::string SmallPolicy::pattern() {
    if (upTo(3) == 0) return address();
    if (_isForeign && upTo(2) == 0)
        return pick({"a*@*", "*a@*", "*@a*", "*@*.a.*", "*@b.*", "a@*b.b", "*@[a*]", "a", "", "**@a", "* @b", "a.*@*",
                     "*@*.*", "*.*@*", "@*", "* a@c", "*@* b"});
    return pick({"*", "*@*", "a@*", "*@a", "*@b", "*@*.b", "a@*.b", "*@[*]", "*@a.b"});
}

std::string SmallPolicy::side() {
    return upTo(3) == 0 ? pick({"(L)", "(M)", "(L)", "(M)", "(D)", "(N)"}) : pattern();
}

std::string SmallPolicy::conditionText() {
    if (_isForeign && upTo(12) == 0) return pick({"", "a@a", ",", "(,*", "*,(L"});
    std::string text = side();
    return text.append(",").append(side());
}

void SmallPolicy::makeList(const std::string& name) {
    int result = ZXPOL_S_OK;
    const ListHiveHandle hive(zxpol_openAddrListHive(_store.key(), &result));
    _ZxPolAddrListAttr attr{};
    attr.type = name == "D" ? ZXPOL_ADDRLIST_DIRECTORY : ZXPOL_ADDRLIST_NORMAL;
    const ListHandle list(zxpol_createAddrList(hive.get(), name.c_str(), &attr, &result));
    require(result, "cannot make a list");
    if (name != "D") fillList(name);
}

// Writes the list's only value anew.
void SmallPolicy::fillList(const std::string& name) {
    std::string image;
    for (size_t count = upTo(4); count > 0; --count) {
        const std::string entry = upTo(9) == 0 ? pick({"a:b", "a:b@a", "a", "\"a@b\""}) : pattern();
        if (!entry.empty()) image.append(entry).push_back('\0');
    }
    image.push_back('\0');
    int result = ZXPOL_S_OK;
    const KeyHandle key = openRawKey(_store.key(), "AddressList\\" + name);
    zxreg_setValue(key.get(), "address1", ZXREG_MULTI_STRING, image.data(), static_cast<uint32_t>(image.size()),
                   &result);
    require(result, "cannot fill a list");
}

void SmallPolicy::writeConditions(const std::string& rulePath) {
    std::vector<std::string> texts(rulePath == "\\" ? 1 + upTo(2) : upTo(3));
    std::generate(texts.begin(), texts.end(), [&] { return conditionText(); });
    writeNumbered(openRawKey(_store.key(), keyOf(rulePath)).get(), "condition", texts);
}

void SmallPolicy::writeMarks(const std::string& rulePath) {
    std::vector<std::string> texts(_tasks.empty() ? 0 : upTo(2));
    std::generate(texts.begin(), texts.end(), [&] { return pick(_tasks); });
    writeNumbered(openRawKey(_store.key(), keyOf(rulePath) + "\\inactive").get(), "inactive", texts);
}

void SmallPolicy::makeTasks(const std::string& rulePath, const RuleHandle& rule) {
    for (size_t i = 0, count = upTo(2); i < count; ++i) {
        const std::string name = "t" + std::to_string(i);
        _tasks.push_back(pathBelow(rulePath, name));
        _ZxPolTaskAttr attr{};
        // By which a match tells it again.
        _tasks.back().copy(attr.displayName, sizeof attr.displayName - 1);
        attr.filter = static_cast<uint32_t>(upTo(1));
        attr.enable = upTo(4) != 0 ? 1 : 0;
        attr.overridable = upTo(2) != 0 ? 1 : 0;
        int result = ZXPOL_S_OK;
        const TaskHandle task(zxpol_createTask(rule.get(), name.c_str(), &attr, &result));
        require(result, "cannot make a task");
    }
}

void SmallPolicy::makeRules(const std::string& parentPath, const RuleHandle& parent, int depth) {
    for (size_t i = 0, count = upTo(depth == 2 ? 3 : 2); depth > 0 && i < count; ++i) {
        const std::string name = "r" + std::to_string(i);
        const std::string path = pathBelow(parentPath, name);
        int result = ZXPOL_S_OK;
        _ZxPolRuleAttr attr{};
        const unsigned char* none[] = {nullptr};
        const RuleHandle rule(zxpol_createRule(parent.get(), name.c_str(), &attr, none, &result));
        require(result, "cannot make a rule");
        _rules.push_back(path);
        writeConditions(path);
        makeTasks(path, rule);
        makeRules(path, rule, depth - 1);
        // Of another type, whose conditions are nobody's.
        attr.matchType = 1;
        if (_isForeign && upTo(14) == 0) zxpol_setRuleAttrib(rule.get(), &attr, &result);
        require(result, "cannot change a rule");
    }
}

// Mostly one type of tasks excludes its like.
void SmallPolicy::makeFilters(const RuleHiveHandle& hive) {
    int result = ZXPOL_S_OK;
    if (upTo(2) != 0)
        zxpol_setExclusiveFilterType(hive.get(), 1, static_cast<ZxPolFilterPriorityType>(upTo(1)), &result);
    require(result, "cannot make a filter exclusive");
}

std::vector<std::string> allTexts(const std::string& alphabet, size_t length) {
    std::vector<std::string> texts{""};
    for (size_t begin = 0; length > 0; --length) {
        const size_t end = texts.size();
        for (; begin < end; ++begin)
            for (char c : alphabet)
                texts.push_back(texts[begin] + c);
    }
    return texts;
}

MatchOptions optionsOf(uint32_t seed) {
    MatchOptions options;
    options.isBest = seed % 2 != 0;
    options.priority = static_cast<ZxPolMatchPriorityType>(seed / 2 % 3);
    options.weight = static_cast<ZxPolMatchWeightType>(seed / 6 % 2);
    return options;
}

std::vector<std::string> smallAddresses() {
    std::vector<std::string> addresses{"",        "@",       "a",      "c",       "ab@a",    "aa@ab",     "a.b@b",
                                       "a.b.c@c", "c@b.b.b", "c@b.a",  " a@a",    "\"a@b\"", "\"a@a\"@b", "c@[a]",
                                       "c@[ab]",  "a@[a]",   "c@[c.b", "c@a.a.a", "c@c.a.c", "b@b.c",     "c a@c",
                                       "c@c b",   "@a",      "a.c@c",  "x:a:b",   "x:a:b@a"};
    for (const char* name : {"a", "b", "c"})
        for (const char* domain : {"a", "b", "c", "a.b", "b.b", "c.b"})
            addresses.push_back(std::string(name) + "@" + domain);
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
    return addresses;
}

namespace {

LibraryDecision decisionOf(const _ZxPolMatchPair& pair) {
    LibraryDecision decision{pair.rulePath, {}};
    for (uint32_t i = 0; i < pair.taskCount; ++i) {
        int result = ZXPOL_S_OK;
        _ZxPolTaskAttr attr{};
        zxpol_getTaskAttrib(pair.tasks[i], &attr, &result);
        require(result, "cannot read a task");
        zxreg_closeKey(attr.setting, &result);
        decision.tasks.emplace_back(attr.displayName);
    }
    return decision;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LibraryDecision& decision) {
    out << '"' << decision.rule << '"';
    for (const std::string& task : decision.tasks)
        out << ' ' << task;
    return out;
}

std::vector<LibraryDecision> libraryDecisions(const Store& store, const MatchOptions& options,
                                              const std::string& sender, const std::vector<std::string>& receivers) {
    int result = ZXPOL_S_OK;
    const _ZxPolMatchOption option{1, options.priority, options.weight, 0, 0};
    zxpol_setMatchOption(&option, &result);
    const ListHiveHandle lists(zxpol_openAddrListHive(store.key(), &result));
    const RuleHiveHandle rules(zxpol_openRuleHive(store.key(), 0, &result));
    require(result, "cannot open a policy");
    std::vector<LibraryDecision> decisions(receivers.size());
    // Whether the mail to the receivers from `first` on, `count` of them, could be matched.
    const auto decide = [&](size_t first, size_t count) {
        std::vector<const char*> list;
        for (size_t i = first; i < first + count; ++i)
            list.push_back(receivers[i].c_str());
        list.push_back(nullptr);
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t pairCount = 0;
        int code = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfoEx(rules.get(), lists.get(), options.isBest ? 1 : 0, sender.c_str(), list.data(),
                                    &pairs, &pairCount, &code);
        for (uint32_t i = 0; i < pairCount; ++i) {
            const LibraryDecision decision = decisionOf(pairs[i]);
            for (char** receiver = pairs[i].receivers; *receiver != nullptr; ++receiver)
                decisions[static_cast<size_t>(std::find(list.begin(), list.end(), *receiver) - list.begin()) + first] =
                    decision;
        }
        if (pairs != nullptr) zxpol_freeMatchPair(pairs, pairCount, &result);
        return ZX_SUCCESS(code);
    };
    // A failure for one receiver is one for all of its mail.
    if (decide(0, receivers.size())) return decisions;
    for (size_t i = 0; i < receivers.size(); ++i)
        if (!decide(i, 1)) decisions[i].rule = "!";
    return decisions;
}

}  // namespace tool
