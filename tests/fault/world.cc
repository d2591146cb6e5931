#include "fault/world.h"

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

namespace zxtest {

namespace {

void demand(int error, const char* what) {
    if (ZX_FAILURE(error) != 0) throw std::runtime_error(std::string("the policy cannot be made: ") + what);
}

void makeTask(_ZxPolComHandle* rule, const char* name, uint32_t filter, int overridable) {
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = taskAttr(name, filter, overridable);
    _ZxPolComHandle* task = zxpol_createTask(rule, name, &attr, &error);
    demand(error, name);
    zxpol_closeTask(task, &error);
}

_ZxPolComHandle* makeRule(_ZxPolComHandle* parent, const char* name, CondList conditions) {
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr(name);
    _ZxPolComHandle* rule = zxpol_createRule(parent, name, &attr, conditions.get(), &error);
    demand(error, name);
    return rule;
}

void closeRule(_ZxPolComHandle* rule) {
    int error = ZXPOL_S_OK;
    zxpol_closeRule(rule, &error);
}

void makeRuleA(_ZxPolComHandle* root) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* a = makeRule(root, "A", {pairOf("*@a.example", "*"), pairOf("bob@b.example", "*@x.example")});
    makeTask(a, "t", 26, 0);
    makeTask(a, "u", 5, 0);
    makeTask(a, "v", 7, 0);
    _ZxPolComHandle* t = zxpol_openTask(a, "t", &error);
    zxpol_addOutcome(t, "infected", "Infected", &error);
    zxpol_addOutcome(t, "clean", "Clean", &error);
    demand(error, "outcomes");
    zxpol_closeTask(t, &error);
    zxpol_inactivateTask(a, "\\scan", 0, &error);
    zxpol_inactivateTask(a, "\\A\\u", 0, &error);
    demand(error, "marks");
    _ZxPolComHandle* b = makeRule(a, "B", {pairOf("bob@a.example", "*")});
    makeTask(b, "deep", 9, 0);
    closeRule(b);
    closeRule(makeRule(a, "C", {pairOf("*@a.example", "*@y.example")}));
    closeRule(a);
}

void makeLists(_ZxPolComHandle* hive) {
    for (const char* name : {"Dir", "Far"}) {
        int error = ZXPOL_S_OK;
        const _ZxPolAddrListAttr attr = directoryAttr(name);
        _ZxPolComHandle* list = zxpol_createAddrList(hive, name, &attr, &error);
        demand(error, name);
        zxpol_closeAddrList(list, &error);
    }
}

void makeClassifications(_ZxPolComHandle* store) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = zxpol_openClassificationHive(store, &error);
    for (const char* name : {"Infected", "Clean"}) {
        const _ZxPolCommAttrib attr = commonAttr(name);
        zxpol_closeClassification(zxpol_createClassification(hive, name, &attr, &error), &error);
        demand(error, name);
    }
    _ZxPolComHandle* infected = zxpol_openClassification(hive, "Infected", &error);
    uint32_t type = 0;
    for (const char* name : {"move", "tell", "log"}) {
        _ZxPolActionAttr attr = actionAttr(name, ++type);
        zxpol_closeAction(zxpol_createAction(infected, name, &attr, &error), &error);
        demand(error, name);
    }
    zxpol_closeClassification(infected, &error);
    zxpol_closeClassificationHive(hive, &error);
}

void makePolicy(_ZxPolComHandle* store) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* lists = zxpol_openAddrListHive(store, &error);
    _ZxPolComHandle* rules = zxpol_openRuleHive(store, 0, &error);
    demand(error, "hives");
    makeLists(lists);
    zxpol_setExclusiveFilterType(rules, 26, ZXPOL_FILTER_ASC_EXCLUSIVE, &error);
    zxpol_setExclusiveFilterType(rules, 7, ZXPOL_FILTER_DESC_EXCLUSIVE, &error);
    _ZxPolComHandle* root = zxpol_openRootRule(rules, &error);
    demand(error, "root");
    makeTask(root, "scan", 26, 1);
    makeTask(root, "stamp", 7, 0);
    makeRuleA(root);
    closeRule(makeRule(root, "D", {pairOf("(Dir)", "*")}));
    closeRule(makeRule(root, "E", {pairOf("*", "carol@z.example")}));
    makeClassifications(store);
    closeRule(root);
    zxpol_closeRuleHive(rules, &error);
    zxpol_closeAddrListHive(lists, &error);
}

_ZxPolComHandle* openMemoryStore() {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore("memory:", &error);
    demand(error, "store");
    return store;
}

// What a store holds that was made through the interface.
StoredKey contentOf(void (*make)(_ZxPolComHandle*)) {
    _ZxPolComHandle* store = openMemoryStore();
    make(store);
    StoredKey made = readStore(store);
    int error = ZXPOL_S_OK;
    zxreg_closeKey(store, &error);
    return made;
}

// Both contents are made once, and copied for every run.
const StoredKey& policyContent() {
    static const StoredKey content = contentOf(makePolicy);
    return content;
}

void makeNormalList(_ZxPolComHandle* hive, const char* name, const std::vector<std::string>& addresses) {
    int error = ZXPOL_S_OK;
    const _ZxPolAddrListAttr attr = normalAttr(name);
    _ZxPolComHandle* list = zxpol_createAddrList(hive, name, &attr, &error);
    std::vector<const char*> array;
    for (const std::string& address : addresses)
        array.push_back(address.c_str());
    array.push_back(nullptr);
    if (!addresses.empty()) zxpol_insertAddress(list, array.data(), &error);
    demand(error, name);
    zxpol_closeAddrList(list, &error);
}

void makeNormalLists(_ZxPolComHandle* store) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* lists = zxpol_openAddrListHive(store, &error);
    _ZxPolComHandle* rules = zxpol_openRuleHive(store, 0, &error);
    demand(error, "hives");
    std::vector<std::string> addresses;
    for (const char* name : {"a1", "a2", "a3", "a4", "b1", "b2", "b3", "b4", "b5", "*", "c1", "c2", "c3"})
        addresses.push_back(addressOf(name, name[0] == 'b' ? 400 : 500));
    makeNormalList(lists, "Open", addresses);
    makeNormalList(lists, "Shut", addresses);
    makeNormalList(lists, "Bare", {});
    _ZxPolComHandle* root = zxpol_openRootRule(rules, &error);
    closeRule(makeRule(root, "R", {pairOf("(Shut)", "*")}));
    closeRule(root);
    zxpol_closeRuleHive(rules, &error);
    zxpol_closeAddrListHive(lists, &error);
}

const StoredKey& listContent() {
    static const StoredKey content = contentOf(makeNormalLists);
    return content;
}

// The addresses of each normal list by its name, in stored order.
std::map<std::string, std::vector<std::string>> storedLists(_ZxPolComHandle* store) {
    std::map<std::string, std::vector<std::string>> found;
    for (const StoredKey& hive : readStore(store).keys) {
        if (hive.name != "AddressList") continue;
        for (const StoredKey& list : hive.keys) {
            const auto isType = [](const StoredValue& value) { return value.name == "type"; };
            if (std::none_of(list.values.begin(), list.values.end(), isType)) continue;
            std::map<int, std::string> images;
            for (const StoredValue& value : list.values) {
                if (value.name.compare(0, 7, "address") == 0) images[std::stoi(value.name.substr(7))] = value.data;
            }
            std::vector<std::string>& addresses = found[list.name];
            for (const auto& image : images) {
                for (size_t at = 0; at < image.second.size() && image.second[at] != '\0';
                     at += addresses.back().size() + 1)
                    addresses.emplace_back(image.second.c_str() + at);
            }
        }
    }
    return found;
}

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += word.substr(0, 2) + " ";
    return line;
}

// The addresses that a list newly opened has; its code where it does not open.
std::string servedAddresses(_ZxPolComHandle* hive, const std::string& name) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* list = zxpol_openAddrList(hive, name.c_str(), &error);
    if (list == nullptr) return "cannot be opened: " + std::to_string(error);
    std::vector<std::string> addresses;
    for (uint32_t index = 0; ZX_SUCCESS(error) != 0; ++index) {
        char address[ZXPOL_ADDRESS_SIZE];
        uint32_t size = sizeof address;
        zxpol_enumAddress(list, index, address, &size, &error);
        if (ZX_SUCCESS(error) != 0) addresses.emplace_back(address);
    }
    zxpol_closeAddrList(list, &error);
    return joined(addresses);
}

}  // namespace

World::World(Start start) : store(openMemoryStore()) {
    if (start == Start::emptyStore) return;
    writeStore(store, start == Start::lists ? listContent() : policyContent());
    int error = ZXPOL_S_OK;
    ruleHive = zxpol_openRuleHive(store, 0, &error);
    listHive = zxpol_openAddrListHive(store, &error);
    root = zxpol_openRootRule(ruleHive, &error);
    if (start == Start::lists) {
        list = zxpol_openAddrList(listHive, "Open", &error);
        demand(error, "opening");
        return;
    }
    a = zxpol_openRule(root, "A", &error);
    task = zxpol_openTask(a, "t", &error);
    list = zxpol_openAddrList(listHive, "Dir", &error);
    classHive = zxpol_openClassificationHive(store, &error);
    classification = zxpol_openClassification(classHive, "Infected", &error);
    action = zxpol_openAction(classification, "tell", &error);
    demand(error, "opening");
}

std::string World::listTrouble() const {
    for (const auto& [name, addresses] : storedLists(store)) {
        std::vector<std::string> once;
        for (const std::string& address : addresses) {
            if (std::find(once.begin(), once.end(), address) == once.end()) once.push_back(address);
        }
        const std::string served = servedAddresses(listHive, name), stored = joined(once);
        if (served != stored) return name + " has " + served + "and stores " + stored;
    }
    return "";
}

std::string World::listWithTwins() const {
    for (const auto& [name, addresses] : storedLists(store)) {
        const std::set<std::string> once(addresses.begin(), addresses.end());
        if (once.size() < addresses.size()) return name + ": " + joined(addresses);
    }
    return "";
}

std::string World::listAddresses() const {
    std::string all;
    for (const auto& [name, addresses] : storedLists(store)) {
        const std::set<std::string> once(addresses.begin(), addresses.end());
        all += name + ": " + joined({once.begin(), once.end()});
    }
    return all;
}

World::~World() {
    close();
}

void World::close() {
    int error = ZXPOL_S_OK;
    zxpol_closeAction(action, &error);
    zxpol_closeClassification(classification, &error);
    zxpol_closeClassificationHive(classHive, &error);
    zxpol_closeAddrList(list, &error);
    zxpol_closeTask(task, &error);
    zxpol_closeRule(a, &error);
    zxpol_closeRule(root, &error);
    zxpol_closeRuleHive(ruleHive, &error);
    zxpol_closeAddrListHive(listHive, &error);
    if (store != nullptr) zxreg_closeKey(store, &error);
    action = classification = classHive = nullptr;
    list = task = a = root = ruleHive = listHive = store = nullptr;
}

}  // namespace zxtest
