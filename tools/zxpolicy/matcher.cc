#include "matcher.h"

#include <algorithm>
#include <set>

#include "rule_tree.h"
#include "text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr int kTries = 3;
// Where the library cuts its debug messages.
constexpr size_t kCutMessage = 511;
constexpr const char* kTaskMessage = "Rule {";

// The library tells the names of a matched rule's tasks in its debug messages only, so these are listened to.
class MessageCapture {
public:
    MessageCapture() {
        gLines = &_lines;
        int result = ZXPOL_S_OK;
        _previous = zxpol_setDebugFunction(&receive, &result);
    }
    ~MessageCapture() {
        int result = ZXPOL_S_OK;
        zxpol_setDebugFunction(_previous, &result);
        gLines = nullptr;
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    const std::vector<std::string>& lines() const { return _lines; }

private:
    static void receive(const char* message) {
        const std::string_view text = message;
        if (gLines != nullptr && text.substr(0, std::string_view(kTaskMessage).size()) == kTaskMessage)
            gLines->emplace_back(text);
    }

    static thread_local std::vector<std::string>* gLines;
    std::vector<std::string> _lines;
    ZxPolDebugFunction _previous = nullptr;
};

thread_local std::vector<std::string>* MessageCapture::gLines = nullptr;

}  // namespace

// Owns what a match call returned.
class Matcher::Answer {
public:
    Answer(const Matcher& matcher, const std::string& sender, std::vector<const char*>& receivers) {
        const auto begin = std::chrono::steady_clock::now();
        zxpol_matchRuleByMailInfoEx(matcher._rules.get(), matcher._lists.get(), matcher._mode, sender.c_str(),
                                    receivers.data(), &_pairs, &_count, &_result);
        _duration = std::chrono::steady_clock::now() - begin;
    }
    ~Answer() {
        int result = ZXPOL_S_OK;
        if (_pairs != nullptr) zxpol_freeMatchPair(_pairs, _count, &result);
    }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    int result() const { return _result; }
    std::chrono::nanoseconds duration() const { return _duration; }
    uint32_t count() const { return _count; }
    const _ZxPolMatchPair& pair(size_t index) const { return _pairs[index]; }

private:
    _ZxPolMatchPair* _pairs = nullptr;
    uint32_t _count = 0;
    int _result = ZXPOL_S_OK;
    std::chrono::nanoseconds _duration{0};
};

Matcher::Matcher(const Store& store, const MatchOptions& options) : _store(store), _mode(options.isBest ? 1 : 0) {
    int result = ZXPOL_S_OK;
    const _ZxPolMatchOption option{1, options.priority, options.weight, 0, 0};
    zxpol_setMatchOption(&option, &result);
    _lists = ListHiveHandle(zxpol_openAddrListHive(store.key(), &result));
    _rules = RuleHiveHandle(zxpol_openRuleHive(store.key(), 0, &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
}

// The full names of the tasks of one pair, from the next lines that the library wrote.
std::vector<std::string> Matcher::taskNames(const Answer& answer, size_t pair, const std::vector<std::string>& lines,
                                            size_t& line) const {
    const std::string path = answer.pair(pair).rulePath;
    const std::string prefix = std::string(kTaskMessage) + path + "} has task : <<";
    std::vector<std::string> names;
    for (uint32_t i = 0; i < answer.pair(pair).taskCount; ++i, ++line) {
        const std::string text = line < lines.size() ? lines[line] : "";
        const bool isCut = text.size() >= kCutMessage;
        const bool isWhole = text.size() >= prefix.size() + 2 && text.compare(text.size() - 2, 2, ">>") == 0;
        if (text.compare(0, prefix.size(), prefix) != 0 || (!isCut && !isWhole))
            throw PolicyError("the library does not tell the tasks of rule " + oneLine(path) + "; please report it");
        if (!isCut) {
            names.push_back(text.substr(prefix.size(), text.size() - prefix.size() - 2));
            continue;
        }
        std::vector<std::string> found;
        for (const std::string& task : tasksOnPath(_rules, path))
            if ((prefix + task + ">>").compare(0, text.size(), text) == 0) found.push_back(task);
        if (found.size() != 1)
            throw PolicyError("the names of the tasks of rule " + oneLine(path) +
                              " are too long to tell; shorten them");
        names.push_back(found.front());
    }
    return names;
}

// Asks once more, listening. Which tasks a rule asks for does not depend on the mail, so once for each rule will do.
void Matcher::learnTasks(const Envelope& envelope, std::vector<const char*>& receivers) {
    const MessageCapture capture;
    const Answer answer(*this, envelope.sender, receivers);
    require(answer.result(), "cannot match a mail from " + inQuotes(envelope.sender));
    size_t line = 0;
    for (uint32_t i = 0; i < answer.count(); ++i)
        _tasks[answer.pair(i).rulePath] = taskNames(answer, i, capture.lines(), line);
}

Decision Matcher::decideOnce(const Envelope& envelope, std::vector<const char*>& receivers) {
    const Answer answer(*this, envelope.sender, receivers);
    require(answer.result(), "cannot match a mail from " + inQuotes(envelope.sender));
    Decision decision{{}, {}, answer.duration()};
    std::set<const char*> matched;
    for (uint32_t i = 0; i < answer.count(); ++i) {
        const _ZxPolMatchPair& pair = answer.pair(i);
        if (_tasks.count(pair.rulePath) == 0) learnTasks(envelope, receivers);
        MatchedRule rule{pair.rulePath, {}, _tasks[pair.rulePath]};
        for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver) {
            rule.receivers.emplace_back(*receiver);
            matched.insert(*receiver);
        }
        decision.matches.push_back(std::move(rule));
    }
    for (size_t i = 0; i + 1 < receivers.size(); ++i)
        if (matched.count(receivers[i]) == 0) decision.unmatched.emplace_back(receivers[i]);
    return decision;
}

// Decides while nothing changes in the store: the mail is decided again when something did.
Decision Matcher::decideUnchanged(const Envelope& envelope, std::vector<const char*>& receivers) {
    for (int i = 0; i < kTries; ++i) {
        const uint64_t before = _store.stamp();
        if (before != _tasksStamp) _tasks.clear();
        _tasksStamp = before;
        try {
            Decision decision = decideOnce(envelope, receivers);
            if (_store.stamp() == before) return decision;
        } catch (const ToolError&) {
            if (_store.stamp() == before) throw;
        }
    }
    StoreUpdate update(_store);
    _tasks.clear();
    Decision decision = decideOnce(envelope, receivers);
    update.cancel();
    _tasksStamp = 0;
    return decision;
}

Decision Matcher::decide(const Envelope& envelope) {
    std::vector<const char*> receivers;
    receivers.reserve(envelope.receivers.size() + 1);
    for (const std::string& receiver : envelope.receivers)
        receivers.push_back(receiver.c_str());
    receivers.push_back(nullptr);
    return decideUnchanged(envelope, receivers);
}

}  // namespace tool
