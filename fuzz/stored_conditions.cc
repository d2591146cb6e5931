#include "stored_conditions.h"

#include <iterator>
#include <map>
#include <memory>
#include <optional>

#include "fail.h"
#include "slow_condition.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace fuzz {

namespace {

constexpr size_t kMostValues = 16, kMostStored = 2048, kMostRead = 1024, kMostSide = 511, kMostSubjects = 4;

// ---- what stands in the store ---------------------------------------------------------------------

struct Value {
    uint32_t type;
    std::string data;
};
using Values = std::map<unsigned, Value>;

// Each part: a byte for number and type, and the data.
Values valuesOf(Bytes& bytes) {
    Values values;
    for (size_t count = 0; !bytes.isEmpty() && count < kMostValues; ++count) {
        const std::string part = bytes.until('\xFF');
        if (part.empty()) continue;
        const auto options = static_cast<unsigned char>(part[0]);
        const uint32_t type = options / 16 == 15 ? options % 4 : uint32_t{ZXREG_STRING};
        values[options % 16] = {type, part.substr(1)};
    }
    return values;
}

using Close = void (*)(_ZxPolComHandle*, int*);

struct Closer {
    Close close;
    void operator()(_ZxPolComHandle* handle) const {
        int error = ZXPOL_S_OK;
        close(handle, &error);
        require(error >= 0, "closing");
    }
};
using Handle = std::unique_ptr<_ZxPolComHandle, Closer>;

Handle owned(_ZxPolComHandle* handle, Close close) {
    require(handle != nullptr, "opening");
    return Handle(handle, {close});
}

// A store with a root rule that has these conditions, and a list L that holds one domain. Values that the store does
// not take are left out.
class World {
public:
    explicit World(Values& values) : _store(owned(zxreg_openStore("memory:", &_error), zxreg_closeKey)) {
        _rules = owned(zxpol_openRuleHive(_store.get(), 0, &_error), zxpol_closeRuleHive);
        _lists = owned(zxpol_openAddrListHive(_store.get(), &_error), zxpol_closeAddrListHive);
        const _ZxPolAddrListAttr attr = {};
        const Handle list = owned(zxpol_createAddrList(_lists.get(), "L", &attr, &_error), zxpol_closeAddrList);
        const char* addresses[] = {"*@list.example", nullptr};
        zxpol_insertAddress(list.get(), addresses, &_error);
        const Handle key = owned(zxreg_openKey(_store.get(), "Rule\\Mail", &_error), zxreg_closeKey);
        zxreg_deleteValue(key.get(), "condition1", &_error);
        require(_error >= 0, "making the policy");
        for (auto value = values.begin(); value != values.end();)
            value = write(key.get(), value->first, value->second) ? std::next(value) : values.erase(value);
    }

    Handle root() {
        int error = ZXPOL_S_OK;
        return owned(zxpol_openRootRule(_rules.get(), &error), zxpol_closeRule);
    }
    _ZxPolComHandle* rules() const { return _rules.get(); }
    _ZxPolComHandle* lists() const { return _lists.get(); }
    _ZxPolComHandle* store() const { return _store.get(); }

private:
    // False when the store does not take the value.
    static bool write(_ZxPolComHandle* key, unsigned number, const Value& value) {
        const std::string name = "condition" + std::to_string(number);
        int error = ZXPOL_S_OK;
        zxreg_setValue(key, name.c_str(), value.type, value.data.data(), static_cast<uint32_t>(value.data.size()),
                       &error);
        return error >= 0;
    }

    int _error = ZXPOL_S_OK;
    Handle _store, _rules{nullptr, {zxpol_closeRuleHive}}, _lists{nullptr, {zxpol_closeAddrListHive}};
};

// ---- what a slow reader makes of it ---------------------------------------------------------------

// The texts in the order of their numbers; nothing when one of them takes them all away.
std::optional<std::vector<std::string>> slowTexts(const Values& values) {
    std::vector<std::string> texts;
    for (const auto& [number, value] : values) {
        if (value.type != ZXREG_STRING || value.data.size() > kMostStored) return std::nullopt;
        texts.push_back(upToNul(value.data));
    }
    return texts;
}

struct Pair {
    std::string sender, receiver;
};

// Nothing for a text without a comma.
std::optional<Pair> slowPair(const std::string& text) {
    const size_t comma = text.find(',');
    if (comma == std::string::npos) return std::nullopt;
    Pair pair{text.substr(0, comma), text.substr(comma + 1)};
    while (!pair.sender.empty() && pair.sender.back() == ' ')
        pair.sender.pop_back();
    while (!pair.receiver.empty() && pair.receiver.front() == ' ')
        pair.receiver.erase(0, 1);
    if (pair.sender.size() > kMostSide || pair.receiver.size() > kMostSide) return Pair{};
    return pair;
}

enum class Answer { no, yes, failure, unknown };

Answer slowSide(const std::string& side, const std::string& address) {
    const size_t colon = address.find(':');
    const std::string subject = colon == std::string::npos ? address : address.substr(colon + 1);
    if (side.empty() || side[0] != '(') return slow::conditionMatches(side, subject) ? Answer::yes : Answer::no;
    // A name with a backslash is a path, which is the store's business.
    if (side.find('\\') != std::string::npos) return Answer::unknown;
    if (side.size() != 3 || side[1] != 'L') return Answer::failure;
    return slow::conditionMatches("*@list.example", subject) ? Answer::yes : Answer::no;
}

Answer slowAnswer(const Values& values, const std::string& sender, const std::string& receiver) {
    Pair pair;
    for (const std::string& text : slowTexts(values).value_or(std::vector<std::string>())) {
        if (text.size() >= kMostRead) return Answer::no;
        // A text without a comma leaves the condition before it.
        pair = slowPair(text).value_or(pair);
        Answer answer = slowSide(pair.receiver, receiver);
        if (answer == Answer::yes) answer = slowSide(pair.sender, sender);
        if (answer != Answer::no) return answer;
    }
    return Answer::no;
}

// ---- the two beside each other --------------------------------------------------------------------

void checkEnumeration(World& world, const Values& values) {
    const Handle root = world.root();
    const std::optional<std::vector<std::string>> texts = slowTexts(values);
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair = {};
        uint32_t size = sizeof pair;
        int error = ZXPOL_S_OK;
        zxpol_enumCondition(root.get(), index, reinterpret_cast<unsigned char*>(&pair), &size, &error);
        if (!texts) return require(error < 0 && error != ZXPOL_E_NO_MORE_ITEMS, "malformed conditions are enumerated");
        if (index == texts->size()) return requireSame(ZXPOL_E_NO_MORE_ITEMS, error, "end of the conditions");
        const std::string& text = (*texts)[index];
        const Pair right = slowPair(text).value_or(Pair());
        const bool isTooLong = text.size() >= kMostRead;
        requireSame(isTooLong ? ZXPOL_E_BUFFER_TOO_SMALL : ZXPOL_S_OK, error, "code of " + shown(text));
        if (isTooLong) continue;
        requireSame(right.sender, std::string(pair.sender), "sender of " + shown(text));
        requireSame(right.receiver, std::string(pair.receiver), "receiver of " + shown(text));
    }
}

void checkMatch(const World& world, const Values& values, const std::string& sender, const std::string& receiver,
                uint32_t mode) {
    const char* receivers[] = {receiver.c_str(), nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK, freed = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfoEx(world.rules(), world.lists(), mode, sender.c_str(), receivers, &pairs, &count, &error);
    const Answer found = error < 0 ? Answer::failure : count == 1 ? Answer::yes : Answer::no;
    zxpol_freeMatchPair(pairs, count, &freed);
    const Answer right = slowAnswer(values, sender, receiver);
    // The best match looks at all conditions, and so may fail at one behind the first that matches.
    const bool mayFail = mode == 1 && right == Answer::yes && found == Answer::failure;
    if (right != found && right != Answer::unknown && !mayFail)
        fail("match of " + shown(sender) + shown(receiver) + " in mode " + std::to_string(mode));
}

// Addresses that have a chance: the sides themselves, and common ones.
std::vector<std::string> subjectsOf(const Values& values) {
    std::vector<std::string> subjects = {"a@b.c", "smtp:x@list.example"};
    for (const auto& [number, value] : values) {
        const Pair pair = slowPair(upToNul(value.data)).value_or(Pair());
        if (subjects.size() > kMostSubjects) break;
        subjects.push_back(pair.sender);
        subjects.push_back(pair.receiver);
    }
    return subjects;
}

// Whether the numbers are those that the library gives; with gaps a new condition may take the place of another.
bool isDense(const Values& values) {
    unsigned next = 1;
    for (const auto& [number, value] : values) {
        if (number != next++) return false;
    }
    return true;
}

// A condition is taken, then it is there, then not there any more, and the others are as before.
void checkChange(World& world, const Values& values) {
    for (const auto& [number, value] : values) {
        if (value.data.find("fuzz.example") != std::string::npos) return;
    }
    const Handle root = world.root();
    const _ZxPolAddrPairCond pair = {"new@fuzz.example", "other@fuzz.example"};
    const auto* record = reinterpret_cast<const unsigned char*>(&pair);
    int error = ZXPOL_S_OK;
    zxpol_addCondition(root.get(), record, &error);
    if (slowTexts(values)) require(error == ZXPOL_S_OK, "a condition is not taken");
    if (!isDense(values)) return;
    zxpol_removeCondition(root.get(), record, &error);
    zxpol_removeCondition(root.get(), record, &error);
    require(error < 0, "a condition was there twice");
    checkEnumeration(world, values);
}

}  // namespace

void checkStoredConditions(Bytes& bytes) {
    Values values = valuesOf(bytes);
    World world(values);
    checkEnumeration(world, values);
    const std::vector<std::string> subjects = subjectsOf(values);
    for (const std::string& sender : subjects) {
        for (const std::string& receiver : subjects) {
            for (const uint32_t mode : {0u, 1u})
                checkMatch(world, values, sender, receiver, mode);
        }
    }
    checkChange(world, values);
}

}  // namespace fuzz
