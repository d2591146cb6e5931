#include "fault/passed_over.h"

#include <fstream>
#include <stdexcept>

namespace zxtest {

namespace {

std::map<std::string, std::string> readTable() {
    std::ifstream file(ZX_PASSED_OVER);
    std::map<std::string, std::string> table;
    for (std::string line; std::getline(file, line);) {
        const size_t tab = line.find('\t');
        if (tab == std::string::npos) throw std::runtime_error("a line without a tab: " + line);
        table[line.substr(0, tab)] = line.substr(tab + 1);
    }
    return table;
}

}  // namespace

const std::map<std::string, std::string>& passedOver() {
    static const std::map<std::string, std::string> table = readTable();
    return table;
}

Sites because(const char* reason, std::initializer_list<const char*> calls) {
    Sites sites;
    for (const char* call : calls)
        sites.push_back({reason, call});
    return sites;
}

Sites operator+(Sites some, const Sites& others) {
    some.insert(some.end(), others.begin(), others.end());
    return some;
}

bool isAt(const Site& site, const std::string& call) {
    const bool isOpen = site.call.back() == '*';
    return isOpen ? call.compare(0, site.call.size() - 1, site.call, 0, site.call.size() - 1) == 0 : call == site.call;
}

Sites positionsOf(std::initializer_list<const char*> children) {
    Sites sites{{"position", "queryValue order"}};
    for (const char* child : children)
        sites.push_back({"position", std::string("openKey ") + child});
    return sites;
}

Sites keysOfANewRule() {
    return because("key-made-later", {"createKey rules", "createKey inactive", "createKey tasks"});
}

Sites keysOfANewTask() {
    return because("key-made-later", {"createKey Classification", "createKey setting"});
}

Sites deletionOf(std::initializer_list<const char*> keys) {
    Sites sites{{"deletion-goes-on", "enumSubkey "}};
    for (const char* key : keys) {
        sites.push_back({"deletion-goes-on", std::string("openKey ") + key});
        sites.push_back({"deletion-goes-on", std::string("deleteKey ") + key});
    }
    return sites;
}

Sites notFoundConditions() {
    return because("not-found", {"queryValue condition*", "enumValue "});
}

Sites takenBack() {
    return because("taken-back", {"openKey rules\\", "enumSubkey "});
}

Sites takenBackFromBelow() {
    return because("taken-back",
                   {"createKey rules\\", "queryValue matchType", "beginUpdate ", "deleteValue condition1"});
}

Sites commonAttributes() {
    return because("common-attributes", {"setValue displayName", "setValue comment"});
}

Sites searchedRules() {
    return because("no-reference", {"enumValue ", "enumSubkey ", "openKey rules\\", "createKey rules\\"});
}

Sites searchedConditions() {
    return searchedRules() + because("no-reference", {"queryValue matchType", "queryValue condition*"});
}

Sites searchedTasks() {
    return searchedRules() + because("no-reference", {"openKey tasks\\", "createKey tasks\\"});
}

}  // namespace zxtest
