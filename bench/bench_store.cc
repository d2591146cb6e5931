// The store's operations one by one, on a store of the size of a large policy, in memory and in SQLite.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "zxregistry.h"

namespace {

constexpr int ruleCount = 10000;

void require(int error) {
    if (error >= 0) return;
    std::fprintf(stderr, "%08x %s\n", static_cast<unsigned>(error), zxreg_lastErrorText());
    std::_Exit(3);
}

// A key that is closed when left.
class Key {
public:
    explicit Key(_ZxPolComHandle* key) : _key(key) {}
    Key(const Key& from, const std::string& name) : _key(nullptr) {
        int error = 0;
        _key = zxreg_createKey(from.get(), name.c_str(), &error);
        require(error);
    }
    ~Key() {
        int error = 0;
        zxreg_closeKey(_key, &error);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    _ZxPolComHandle* get() const { return _key; }

private:
    _ZxPolComHandle* _key;
};

_ZxPolComHandle* openRoot(const std::string& location) {
    int error = 0;
    _ZxPolComHandle* root = zxreg_openStore(location.c_str(), &error);
    require(error);
    return root;
}

void setText(const Key& key, const char* name, const std::string& text) {
    int error = 0;
    zxreg_setValue(key.get(), name, ZXREG_STRING, text.c_str(), static_cast<uint32_t>(text.size() + 1), &error);
    require(error);
}

void setNumber(const Key& key, const char* name, uint32_t number) {
    int error = 0;
    zxreg_setValue(key.get(), name, ZXREG_NUMBER, &number, sizeof number, &error);
    require(error);
}

// One rule: four keys and six values.
void addRule(const Key& rules, int number) {
    const std::string name = "rule" + std::to_string(number);
    const Key rule(rules, name);
    setText(rule, "displayName", "The rule of department " + std::to_string(number));
    setText(rule, "comment", "");
    setNumber(rule, "matchType", 0);
    setNumber(rule, "order", static_cast<uint32_t>(number + 1));
    setText(rule, "condition1", "*,*@" + name + ".example.com");
    setText(rule, "condition2", "*@" + name + ".example.com,*");
    const Key below(rule, "rules");
    const Key tasks(rule, "tasks");
    const Key inactive(rule, "inactive");
}

// Fills the store and leaves its root open.
_ZxPolComHandle* makeRules(const std::string& location) {
    _ZxPolComHandle* root = openRoot(location);
    int error = 0;
    zxreg_beginUpdate(root, &error);
    require(error);
    {
        int opened = 0;
        const Key self(zxreg_openKey(root, "", &opened));
        const Key rules(self, "rules");
        for (int i = 0; i < ruleCount; ++i) {
            addRule(rules, i);
        }
    }
    zxreg_endUpdate(root, &error);
    require(error);
    return root;
}

// A folder for the stores of this program, removed at the end.
class Folder {
public:
    Folder() { require(mkdtemp(_name) != nullptr ? 0 : -1); }
    ~Folder() {
        for (const char* suffix : {"", "-wal", "-shm", ".key"}) {
            unlink((path() + suffix).c_str());
        }
        rmdir(_name);
    }
    std::string path() const { return std::string(_name) + "/rules.db"; }
    std::string location() const { return "sqlite:" + path(); }

private:
    char _name[32] = "/tmp/bench_store.XXXXXX";
};

const Folder& folder() {
    static const Folder made;
    return made;
}

// The store of rules, open for the whole run: 0 in memory, 1 in SQLite.
_ZxPolComHandle* rootOf(int64_t engine) {
    static _ZxPolComHandle* const inMemory = makeRules("memory:");
    static _ZxPolComHandle* const inSqlite = openRoot(folder().location());
    return engine == 0 ? inMemory : inSqlite;
}

double residentMiB() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

// Comes first: the memory that the first opening takes is that of a fresh process.
void openStoreOfRules(benchmark::State& state) {
    const double before = residentMiB();
    double taken = 0;
    for (auto _ : state) {
        const Key root(openRoot(folder().location()));
        if (taken == 0) taken = residentMiB() - before;
    }
    static const double takenAtFirst = taken;
    state.counters["MiB"] = takenAtFirst;
}
BENCHMARK(openStoreOfRules)->Unit(benchmark::kMillisecond)->Iterations(10);

class Store : public benchmark::Fixture {
public:
    using benchmark::Fixture::SetUp;
    void SetUp(benchmark::State& state) override {
        int error = 0;
        _root = rootOf(state.range(0));
        _rule = zxreg_openKey(_root, "rules\\rule5000", &error);
        require(error);
        _rules = zxreg_openKey(_root, "rules", &error);
        require(error);
        state.SetLabel(state.range(0) == 0 ? "memory" : "sqlite");
    }
    using benchmark::Fixture::TearDown;
    void TearDown(benchmark::State&) override {
        int error = 0;
        zxreg_closeKey(_rule, &error);
        zxreg_closeKey(_rules, &error);
    }

protected:
    void openAndClose(benchmark::State& state, _ZxPolComHandle* from, const char* path) {
        int error = 0;
        for (auto _ : state) {
            _ZxPolComHandle* key = zxreg_openKey(from, path, &error);
            zxreg_closeKey(key, &error);
        }
        require(error);
    }
    void query(benchmark::State& state, const char* name) {
        char data[512];
        int error = 0;
        for (auto _ : state) {
            uint32_t type = 0;
            uint32_t size = sizeof data;
            zxreg_queryValue(_rule, name, &type, data, &size, &error);
            benchmark::DoNotOptimize(data);
        }
    }

    _ZxPolComHandle* _root = nullptr;
    _ZxPolComHandle* _rules = nullptr;
    _ZxPolComHandle* _rule = nullptr;
};

#define ON_BOTH(name) BENCHMARK_REGISTER_F(Store, name)->Arg(0)->Arg(1)

BENCHMARK_DEFINE_F(Store, ReadNumber)(benchmark::State& state) {
    query(state, "order");
}
ON_BOTH(ReadNumber);
BENCHMARK_DEFINE_F(Store, ReadString)(benchmark::State& state) {
    query(state, "condition2");
}
ON_BOTH(ReadString);
BENCHMARK_DEFINE_F(Store, ReadMissingValue)(benchmark::State& state) {
    query(state, "condition3");
}
ON_BOTH(ReadMissingValue);
BENCHMARK_DEFINE_F(Store, OpenCloseSubkey)(benchmark::State& state) {
    openAndClose(state, _rule, "tasks\\");
}
ON_BOTH(OpenCloseSubkey);
BENCHMARK_DEFINE_F(Store, OpenCloseOneOfManySubkeys)(benchmark::State& state) {
    openAndClose(state, _rules, "rule7000");
}
ON_BOTH(OpenCloseOneOfManySubkeys);
BENCHMARK_DEFINE_F(Store, OpenClosePathOfThree)(benchmark::State& state) {
    openAndClose(state, _root, "rules\\rule7000\\tasks");
}
ON_BOTH(OpenClosePathOfThree);

BENCHMARK_DEFINE_F(Store, CreateExistingSubkey)(benchmark::State& state) {
    int error = 0;
    for (auto _ : state) {
        _ZxPolComHandle* key = zxreg_createKey(_rule, "tasks", &error);
        zxreg_closeKey(key, &error);
    }
    require(error);
}
ON_BOTH(CreateExistingSubkey);

BENCHMARK_DEFINE_F(Store, EnumSubkey)(benchmark::State& state) {
    char name[256];
    int error = 0;
    uint32_t index = 0;
    for (auto _ : state) {
        uint32_t size = sizeof name;
        zxreg_enumSubkey(_rules, index++ % ruleCount, name, &size, &error);
        benchmark::DoNotOptimize(name);
    }
    require(error);
}
ON_BOTH(EnumSubkey);

BENCHMARK_DEFINE_F(Store, EnumValue)(benchmark::State& state) {
    char name[256];
    char data[512];
    int error = 0;
    uint32_t index = 0;
    for (auto _ : state) {
        uint32_t nameSize = sizeof name;
        uint32_t dataSize = sizeof data;
        uint32_t type = 0;
        zxreg_enumValue(_rule, index++ % 6, name, &nameSize, &type, data, &dataSize, &error);
        benchmark::DoNotOptimize(data);
    }
    require(error);
}
ON_BOTH(EnumValue);

BENCHMARK_DEFINE_F(Store, Stamp)(benchmark::State& state) {
    int error = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zxreg_stamp(_rules, &error));
    }
    require(error);
}
ON_BOTH(Stamp);

// Each write durable by itself.
BENCHMARK_DEFINE_F(Store, WriteValue)(benchmark::State& state) {
    int error = 0;
    for (auto _ : state) {
        zxreg_setValue(_rule, "written", ZXREG_STRING, "some text", 10, &error);
    }
    require(error);
}
ON_BOTH(WriteValue);

// Durable together, at the end of the run.
BENCHMARK_DEFINE_F(Store, WriteValueInUpdate)(benchmark::State& state) {
    int error = 0;
    zxreg_beginUpdate(_rule, &error);
    for (auto _ : state) {
        zxreg_setValue(_rule, "written", ZXREG_STRING, "some text", 10, &error);
    }
    require(error);
    zxreg_endUpdate(_rule, &error);
    require(error);
}
ON_BOTH(WriteValueInUpdate);

// Reading right after a commit, which has to look at the database once.
BENCHMARK_DEFINE_F(Store, ReadAfterWrite)(benchmark::State& state) {
    int error = 0;
    char data[512];
    for (auto _ : state) {
        state.PauseTiming();
        zxreg_setValue(_rule, "written", ZXREG_STRING, "some text", 10, &error);
        state.ResumeTiming();
        uint32_t size = sizeof data;
        zxreg_queryValue(_rule, "order", nullptr, data, &size, &error);
    }
    require(error);
}
ON_BOTH(ReadAfterWrite);

// A key with many values of two KiB, as a large address list has.
BENCHMARK_DEFINE_F(Store, FillAndEmptyLargeList)(benchmark::State& state) {
    constexpr int count = 12500;
    const std::string image(2048, 'x');
    int error = 0;
    for (auto _ : state) {
        zxreg_beginUpdate(_rule, &error);
        require(error);
        for (int i = 0; i < count; ++i) {
            const std::string name = "address" + std::to_string(i);
            zxreg_setValue(_rule, name.c_str(), ZXREG_MULTI_STRING, image.data(), 2048, &error);
        }
        for (int i = 0; i < count; ++i) {
            const std::string name = "address" + std::to_string(i);
            zxreg_deleteValue(_rule, name.c_str(), &error);
        }
        require(error);
        zxreg_endUpdate(_rule, &error);
        require(error);
    }
    state.SetItemsProcessed(state.iterations() * count * 2);
}
ON_BOTH(FillAndEmptyLargeList)->Unit(benchmark::kMillisecond);

// The value of one KiB written 80 times, then the next one, among many: what filling a large address list does. An item
// is one write.
BENCHMARK_DEFINE_F(Store, RewriteValuesInUpdate)(benchmark::State& state) {
    constexpr int count = 2000;
    constexpr int timesEach = 80;
    std::string image(1024, 'x');
    int error = 0;
    zxreg_beginUpdate(_rule, &error);
    require(error);
    for (auto _ : state) {
        zxreg_beginUpdate(_rule, &error);
        for (int i = 0; i < count; ++i) {
            const std::string name = "address" + std::to_string(i);
            for (size_t k = 0; k < timesEach; ++k) {
                image[k] ^= 1;
                zxreg_setValue(_rule, name.c_str(), ZXREG_MULTI_STRING, image.data(), 1024, &error);
            }
        }
        require(error);
        state.PauseTiming();
        zxreg_cancelUpdate(_rule, &error);
        state.ResumeTiming();
    }
    zxreg_cancelUpdate(_rule, &error);
    require(error);
    state.SetItemsProcessed(state.iterations() * count * timesEach);
}
ON_BOTH(RewriteValuesInUpdate)->Unit(benchmark::kMillisecond);

// New values of two KiB made durable in one update.
BENCHMARK_DEFINE_F(Store, CommitLargeList)(benchmark::State& state) {
    constexpr int count = 13000;
    const std::string image(2048, 'x');
    int error = 0;
    for (auto _ : state) {
        const Key list(zxreg_createKey(_rule, "list", &error));
        zxreg_beginUpdate(list.get(), &error);
        require(error);
        for (int i = 0; i < count; ++i) {
            const std::string name = "address" + std::to_string(i);
            zxreg_setValue(list.get(), name.c_str(), ZXREG_MULTI_STRING, image.data(), 2048, &error);
        }
        require(error);
        zxreg_endUpdate(list.get(), &error);
        require(error);
        state.PauseTiming();
        zxreg_deleteKey(_rule, "list", &error);
        require(error);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
ON_BOTH(CommitLargeList)->Unit(benchmark::kMillisecond);

// Subkeys made and deleted again, the oldest first, in a store with many keys.
BENCHMARK_DEFINE_F(Store, CreateAndDeleteSubkeys)(benchmark::State& state) {
    constexpr int count = 10000;
    int error = 0;
    for (auto _ : state) {
        zxreg_beginUpdate(_rule, &error);
        require(error);
        for (int i = 0; i < count; ++i) {
            const std::string name = "made" + std::to_string(i);
            zxreg_closeKey(zxreg_createKey(_rule, name.c_str(), &error), &error);
        }
        for (int i = 0; i < count; ++i) {
            const std::string name = "made" + std::to_string(i);
            zxreg_deleteKey(_rule, name.c_str(), &error);
        }
        require(error);
        zxreg_endUpdate(_rule, &error);
        require(error);
    }
    state.SetItemsProcessed(state.iterations() * count * 2);
}
ON_BOTH(CreateAndDeleteSubkeys)->Unit(benchmark::kMillisecond);

// Fills the SQLite store in a process of its own, so that this one starts empty.
void makeRulesElsewhere() {
    const std::string location = folder().location();
    const pid_t child = fork();
    if (child == 0) {
        int error = 0;
        zxreg_closeKey(makeRules(location), &error);
        std::_Exit(error < 0 ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    require(status == 0 ? 0 : -1);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    makeRulesElsewhere();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
