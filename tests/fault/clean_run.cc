#include "fault/clean_run.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace zxtest {

namespace {

std::set<std::string> linesOf(const std::string& content) {
    std::set<std::string> lines;
    std::istringstream stream(content);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

// A line without what a failure that is passed over may change: the number of a value and a position.
std::string essenceOf(const std::string& line) {
    static const std::regex number("(condition|inactive|address)[0-9]+ "), position("\\\\(order|version) 0 .*");
    return std::regex_replace(std::regex_replace(line, number, "$1# "), position, "\\$1");
}

}  // namespace

CleanRun::CleanRun(const Scenario& scenario) {
    const std::unique_ptr<World> world = worldOf(scenario);
    before = world->content();
    failNoStoreCall();
    watchStore([&](uint64_t call) { _states[call] = world->content(); });
    outcome = scenario.act(*world);
    watchStore(nullptr);
    calls = countedStoreCalls();
    content = world->content();
    if (world->hasNormalLists()) addresses = world->listAddresses();
    repeatedResult = scenario.act(*world).result;
    repeated = world->content();
    _lines = linesOf(before);
    for (const auto& state : _states)
        _lines.merge(linesOf(state.second));
    for (const std::string& line : _lines)
        _essences.insert(essenceOf(line));
}

const std::string& CleanRun::stateBefore(uint64_t call) const {
    const auto after = _states.lower_bound(call);
    return after == _states.begin() ? before : std::prev(after)->second;
}

bool CleanRun::passesThrough(const std::string& found) const {
    return found == before ||
           std::any_of(_states.begin(), _states.end(), [&](const auto& state) { return state.second == found; });
}

std::string CleanRun::foreignLine(const std::string& found) const {
    for (const std::string& line : linesOf(found)) {
        if (_lines.count(line) == 0 && _essences.count(essenceOf(line)) == 0) return line;
    }
    return "";
}

std::string CleanRun::differenceTo(const std::string& found) const {
    const std::set<std::string> is = linesOf(found), should = linesOf(content);
    std::string text;
    for (const std::string& line : is)
        if (should.count(line) == 0) text += "+ " + line + "\n";
    for (const std::string& line : should)
        if (is.count(line) == 0) text += "- " + line + "\n";
    return text;
}

std::unique_ptr<World> worldOf(const Scenario& scenario) {
    auto world = std::make_unique<World>(scenario.start);
    if (scenario.prepare != nullptr) scenario.prepare(*world);
    return world;
}

std::string troubleInBooks() {
    std::string trouble;
    for (const std::string& violation : storeViolations())
        trouble += violation + "\n";
    for (const std::string& key : openStoreKeys())
        trouble += "never closed: " + key + "\n";
    if (openStoreUpdates() != 0) trouble += "an update is open\n";
    resetFaultStore();
    return trouble;
}

}  // namespace zxtest
