// What programs do beside matching: converting texts, asking who refers to a list or a classification, and editing
// classifications. Each stands beside the plainest way to do the same: iconv for texts, reading all rules' values key
// by key for the questions, writing the keys and values oneself for the edits.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zxpolicy.h"
#include "zxregistry.h"

namespace {

void require(int error, const char* what) {
    if (error >= 0) return;
    std::fprintf(stderr, "%s: %08x %s\n", what, static_cast<unsigned>(error), zxreg_lastErrorText());
    std::_Exit(3);
}

// ---- texts --------------------------------------------------------------------------------------------------

// UTF-8 of at least `bytes` bytes: plain ASCII, or words of two and three bytes a character among it.
std::string sample(size_t bytes, bool isMixed) {
    const std::string word =
        isMixed ? "policy \xD0\xBF\xD0\xBE\xD1\x87\xD1\x82\xD0\xB0 \xE9\x83\xB5\xE4\xBB\xB6 " : "policy mail ";
    std::string text;
    while (text.size() < bytes)
        text += word;
    return text;
}

std::string toUtf16(const std::string& text) {
    std::string out(text.size() * 2, '\0');
    auto size = static_cast<unsigned>(out.size());
    require(mapToUnicode(out.data(), &size, text.data(), static_cast<unsigned>(text.size())), "mapToUnicode");
    out.resize(size);
    return out;
}

using Convert = int (*)(char*, unsigned*, const char*, unsigned);

void convert(benchmark::State& state, Convert function, const std::string& text) {
    std::vector<char> out(text.size() * 3);
    for (auto _ : state) {
        auto size = static_cast<unsigned>(out.size());
        require(function(out.data(), &size, text.data(), static_cast<unsigned>(text.size())), "conversion");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void withIconv(benchmark::State& state, const char* to, const char* from, const std::string& text) {
    std::vector<char> out(text.size() * 3);
    for (auto _ : state) {
        iconv_t converter = iconv_open(to, from);
        std::string input = text;
        char* source = input.data();
        char* target = out.data();
        size_t sourceLeft = text.size();
        size_t targetLeft = out.size();
        if (iconv(converter, &source, &sourceLeft, &target, &targetLeft) != 0) std::_Exit(3);
        iconv_close(converter);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

bool isMixed(const benchmark::State& state) {
    return state.range(1) != 0;
}

void toUnicode(benchmark::State& state) {
    convert(state, mapToUnicode, sample(static_cast<size_t>(state.range(0)), isMixed(state)));
}
void toUnicodeIconv(benchmark::State& state) {
    withIconv(state, "UTF-16LE", "UTF-8", sample(static_cast<size_t>(state.range(0)), isMixed(state)));
}
void fromUnicode(benchmark::State& state) {
    convert(state, mapFromUnicode, toUtf16(sample(static_cast<size_t>(state.range(0)), isMixed(state))));
}
void fromUnicodeIconv(benchmark::State& state) {
    withIconv(state, "UTF-8", "UTF-16LE", toUtf16(sample(static_cast<size_t>(state.range(0)), isMixed(state))));
}
BENCHMARK(toUnicode)->ArgNames({"bytes", "mixed"})->ArgsProduct({{32, 65536}, {0, 1}});
BENCHMARK(toUnicodeIconv)->ArgNames({"bytes", "mixed"})->ArgsProduct({{32, 65536}, {0, 1}});
BENCHMARK(fromUnicode)->ArgNames({"bytes", "mixed"})->ArgsProduct({{32, 65536}, {0, 1}});
BENCHMARK(fromUnicodeIconv)->ArgNames({"bytes", "mixed"})->ArgsProduct({{32, 65536}, {0, 1}});

// ---- references ---------------------------------------------------------------------------------------------

// A store in memory with rules below the root, each with two conditions and a task with one outcome.
class Rules {
public:
    explicit Rules(int64_t count) {
        int error = ZXPOL_S_OK;
        _store = zxreg_openStore("memory:", &error);
        zxreg_beginUpdate(_store, &error);
        _ZxPolComHandle* hive = zxpol_openRuleHive(_store, 0, &error);
        _ZxPolComHandle* root = zxpol_openRootRule(hive, &error);
        require(error, "root");
        zxreg_deleteKey(_store, "Rule\\Mail\\rules", &error);
        _ZxPolComHandle* children = zxreg_createKey(_store, "Rule\\Mail\\rules", &error);
        for (int64_t i = 1; i <= count; ++i)
            addRule(children, static_cast<uint32_t>(i));
        zxreg_closeKey(children, &error);
        zxpol_closeRule(root, &error);
        zxpol_closeRuleHive(hive, &error);
        zxreg_endUpdate(_store, &error);
        require(error, "rules");
    }
    ~Rules() {
        int error = ZXPOL_S_OK;
        zxreg_closeKey(_store, &error);
    }
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;
    _ZxPolComHandle* store() const { return _store; }

private:
    static void setText(_ZxPolComHandle* key, const char* name, const char* text) {
        int error = ZXPOL_S_OK;
        zxreg_setValue(key, name, ZXREG_STRING, text, static_cast<uint32_t>(std::strlen(text) + 1), &error);
        require(error, name);
    }
    static void setNumber(_ZxPolComHandle* key, const char* name, uint32_t number) {
        int error = ZXPOL_S_OK;
        zxreg_setValue(key, name, ZXREG_NUMBER, &number, sizeof number, &error);
        require(error, name);
    }
    static _ZxPolComHandle* make(_ZxPolComHandle* parent, const char* name) {
        int error = ZXPOL_S_OK;
        _ZxPolComHandle* made = zxreg_createKey(parent, name, &error);
        require(error, name);
        return made;
    }
    static void addRule(_ZxPolComHandle* siblings, uint32_t number) {
        int error = ZXPOL_S_OK;
        const std::string name = "rule" + std::to_string(number);
        _ZxPolComHandle* rule = make(siblings, name.c_str());
        setNumber(rule, "matchType", 0);
        setNumber(rule, "order", number);
        setText(rule, "condition1", "(Partners),*@example.com");
        setText(rule, "condition2", "*@example.net,(Staff)");
        for (const char* subkey : {"rules", "inactive", "tasks", "tasks\\scan", "tasks\\scan\\Classification"})
            zxreg_closeKey(make(rule, subkey), &error);
        _ZxPolComHandle* task = zxreg_openKey(rule, "tasks\\scan", &error);
        setNumber(task, "order", 1);
        _ZxPolComHandle* outcomes = zxreg_openKey(task, "Classification", &error);
        setText(outcomes, "infected", "Infected");
        for (_ZxPolComHandle* key : {outcomes, task, rule})
            zxreg_closeKey(key, &error);
        require(error, "rule");
    }

    _ZxPolComHandle* _store = nullptr;
};

void countRules(benchmark::State& state) {
    state.counters["each_rule"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The question whose answer is no, so that every rule is looked at.
void refer(benchmark::State& state, ZxPolRefEntity entity) {
    const Rules rules(state.range(0));
    for (auto _ : state) {
        char path[64];
        uint32_t size = sizeof path;
        int error = ZXPOL_S_OK;
        if (zxpol_checkReferInRule(rules.store(), entity, "Nobody", path, &size, &error) != 0) std::_Exit(3);
        require(error, "checkReferInRule");
    }
    countRules(state);
}
void referToList(benchmark::State& state) {
    refer(state, ZXPOL_REF_ADDRLIST);
}
void referToClassification(benchmark::State& state) {
    refer(state, ZXPOL_REF_CLASSIFICATION);
}

// The least that any search does: each rule's key opened by its name, and its values read.
void readAllRules(benchmark::State& state) {
    const Rules rules(state.range(0));
    for (auto _ : state) {
        int error = ZXPOL_S_OK;
        _ZxPolComHandle* children = zxreg_openKey(rules.store(), "Rule\\Mail\\rules", &error);
        char name[256];
        char text[1024];
        for (uint32_t i = 0;; ++i) {
            uint32_t size = sizeof name;
            zxreg_enumSubkey(children, i, name, &size, &error);
            if (error < 0) break;
            _ZxPolComHandle* rule = zxreg_openKey(children, name, &error);
            for (uint32_t v = 0; error >= 0; ++v) {
                uint32_t nameSize = sizeof name;
                uint32_t textSize = sizeof text;
                zxreg_enumValue(rule, v, name, &nameSize, nullptr, text, &textSize, &error);
            }
            error = ZXPOL_S_OK;
            zxreg_closeKey(rule, &error);
        }
        error = ZXPOL_S_OK;
        zxreg_closeKey(children, &error);
    }
    countRules(state);
}
BENCHMARK(referToList)->ArgName("rules")->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(referToClassification)->ArgName("rules")->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(readAllRules)->ArgName("rules")->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

// ---- classifications ----------------------------------------------------------------------------------------

// Creates a classification with one action and deletes it again.
void editClassification(benchmark::State& state) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore("memory:", &error);
    _ZxPolComHandle* hive = zxpol_openClassificationHive(store, &error);
    for (auto _ : state) {
        const _ZxPolCommAttrib attr = {"Infected mail", "what the scanner found"};
        _ZxPolActionAttr action = {"Quarantine", "", 0, 3, nullptr};
        _ZxPolComHandle* made = zxpol_createClassification(hive, "Infected", &attr, &error);
        zxpol_closeAction(zxpol_createAction(made, "quarantine", &action, &error), &error);
        zxpol_closeClassification(made, &error);
        zxpol_deleteClassification(hive, "Infected", &error);
        require(error, "classification");
    }
    zxpol_closeClassificationHive(hive, &error);
    zxreg_closeKey(store, &error);
}

// The same keys and values, written and deleted by hand.
void editClassificationByHand(benchmark::State& state) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore("memory:", &error);
    const uint32_t number = 1;
    for (auto _ : state) {
        _ZxPolComHandle* made = zxreg_createKey(store, "Infected", &error);
        zxreg_setValue(made, "comment", ZXREG_STRING, "what the scanner found", 23, &error);
        zxreg_setValue(made, "displayName", ZXREG_STRING, "Infected mail", 14, &error);
        zxreg_closeKey(zxreg_createKey(made, "actions", &error), &error);
        _ZxPolComHandle* action = zxreg_createKey(made, "actions\\quarantine", &error);
        zxreg_setValue(action, "order", ZXREG_NUMBER, &number, sizeof number, &error);
        zxreg_closeKey(zxreg_createKey(action, "setting", &error), &error);
        zxreg_setValue(action, "comment", ZXREG_STRING, "", 1, &error);
        zxreg_setValue(action, "displayName", ZXREG_STRING, "Quarantine", 11, &error);
        zxreg_setValue(action, "actionType", ZXREG_NUMBER, &number, sizeof number, &error);
        zxreg_closeKey(action, &error);
        zxreg_deleteKey(made, "actions\\quarantine\\setting", &error);
        zxreg_deleteKey(made, "actions\\quarantine", &error);
        zxreg_deleteKey(made, "actions", &error);
        zxreg_closeKey(made, &error);
        zxreg_deleteKey(store, "Infected", &error);
        require(error, "classification by hand");
    }
    zxreg_closeKey(store, &error);
}
BENCHMARK(editClassification);
BENCHMARK(editClassificationByHand);

}  // namespace

BENCHMARK_MAIN();
