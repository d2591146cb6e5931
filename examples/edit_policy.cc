// Edits a policy through the exported classes. They are what the flat functions stand on: the same operations, with
// C++ objects in the place of handles, and the same results.
//
//     edit_policy [STORE]                    edit_policy sqlite:policy.db; without a store, one in memory
//
// The headers of the classes are installed below zxpolicy/. An object that an operation returns belongs to the caller:
// put it into a std::unique_ptr at once. Objects do not depend on each other; a rule may be used after its hive is
// gone. An operation wants a success in its result argument and writes its own result there, so each is tested at once:
// `check` makes an exception of a failure, which the flat interface never does.
//
// The program makes the rule \Sales with two conditions and a task that has an outcome, and the rule \Sales\Press,
// for which a mark switches that task off. It gives \Sales the first place among the rules and prints the tree. Run
// again on the same store it finds everything there: creating what exists opens it.
#include <zxpolicy.h>
#include <zxpolicy/rules/rule.h>
#include <zxpolicy/rules/rule_hive.h>
#include <zxpolicy/rules/task.h>
#include <zxregistry.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Rule = std::unique_ptr<ZxPolRule>;

void check(int error) {
    if (ZX_SUCCESS(error)) return;
    char text[32];
    std::snprintf(text, sizeof text, "result 0x%08x", static_cast<unsigned>(error));
    throw std::runtime_error(text);
}

// What does not fit is refused: a condition that was cut would be another one.
template <size_t N>
void copy(const char* text, char (&field)[N]) {
    if (std::snprintf(field, N, "%s", text) >= static_cast<int>(N)) throw std::length_error(text);
}

// A condition crosses the interface as the bytes of its record, in a list that a null pointer closes.
class Conditions {
public:
    void add(const char* sender, const char* receiver) {
        _ZxPolAddrPairCond pair{};
        copy(sender, pair.sender);
        copy(receiver, pair.receiver);
        _pairs.push_back(pair);
    }

    const unsigned char** list() {
        _list.clear();
        for (const _ZxPolAddrPairCond& pair : _pairs)
            _list.push_back(reinterpret_cast<const unsigned char*>(&pair));
        _list.push_back(nullptr);
        return _list.data();
    }

private:
    std::vector<_ZxPolAddrPairCond> _pairs;
    std::vector<const unsigned char*> _list;
};

Rule createRule(ZxPolRule& parent, const char* name, const char* displayName, Conditions conditions) {
    _ZxPolRuleAttr attr{};
    copy(displayName, attr.displayName);
    int error = ZXPOL_S_OK;
    Rule rule(parent.createChildRule(name, &attr, conditions.list(), &error));
    check(error);
    return rule;
}

void createTask(ZxPolRule& rule, const char* name, uint32_t filter) {
    _ZxPolTaskAttr attr{};
    attr.filter = filter;
    attr.enable = 1;
    attr.overridable = 1;
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolTask> task(rule.createTask(name, &attr, &error));
    check(error);
    task->addOutcome("infected", "Infected", &error);
    check(error);
}

void edit(ZxPolRule& root) {
    int error = ZXPOL_S_OK;
    Conditions sales;
    sales.add("*", "*@sales.example.com");
    sales.add("*@partner.example", "*");
    const Rule rule = createRule(root, "Sales", "Sales department", sales);
    createTask(*rule, "scan", 26);

    // The conditions of a child lie within those of its parent; others are refused.
    Conditions press;
    press.add("*", "press@sales.example.com");
    const Rule child = createRule(*rule, "Press", "Press office", press);
    child->inactivateTask("\\Sales\\scan", &error, 0);
    check(error);
    root.setChildRuleOrder("Sales", 1, &error);
    check(error);
}

// Enumerations are walked until the code's low 16 bits are 12.
bool isEnd(int error) {
    return ZX_FAILURE(error) && (error & 0xffff) == 12;
}

void print(ZxPolRule& rule) {
    std::cout << (rule.name().empty() ? "\\" : rule.name()) << "\n";
    for (uint32_t index = 0;; ++index) {
        int error = ZXPOL_S_OK;
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        rule.enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, &error);
        if (isEnd(error)) break;
        check(error);
        std::cout << "  from " << pair.sender << " to " << pair.receiver << "\n";
    }
    for (const std::string& task : rule.inactiveTasks())
        std::cout << "  without " << task << "\n";
    for (uint32_t index = 0;; ++index) {
        int error = ZXPOL_S_OK;
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        rule.enumTask(index, name, &size, &error);
        if (isEnd(error)) break;
        check(error);
        std::cout << "  task " << name << "\n";
    }
    for (uint32_t index = 0;; ++index) {
        int error = ZXPOL_S_OK;
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        rule.enumChildRule(index, name, &size, &error);
        if (isEnd(error)) break;
        check(error);
        const Rule child(rule.openChildRule(name, &error));
        check(error);
        print(*child);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    int error = ZXPOL_S_OK;
    const auto close = [](_ZxPolComHandle* key) {
        int closing = ZXPOL_S_OK;
        zxreg_closeKey(key, &closing);
    };
    const std::unique_ptr<_ZxPolComHandle, decltype(close)> store(
        zxreg_openStore(argc > 1 ? argv[1] : "memory:", &error), close);
    check(error);
    const std::unique_ptr<ZxPolRuleHive> hive(ZxPolRuleHive::open(store.get(), 0, &error));
    check(error);
    const Rule root(hive->openRootRule(&error));
    check(error);
    edit(*root);
    print(*root);
    return 0;
} catch (const std::exception& failure) {
    std::cerr << "edit_policy: " << failure.what() << "\n";
    return 1;
}
