// Every function of the table called with every kind of bad result pointer and handle. The arguments are made from
// each function's own type, so a new row is probed as soon as it is in the table.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

#include "zxpolicy_explain.h"

namespace {

constexpr uint32_t kNone = 0;
constexpr uint32_t kKinds[] = {ZXREG_HANDLE_KEY,
                               ZXPOL_HANDLE_ADDRLIST_HIVE,
                               ZXPOL_HANDLE_ADDRLIST,
                               ZXPOL_HANDLE_CLASS_HIVE,
                               ZXPOL_HANDLE_CLASSIFICATION,
                               ZXPOL_HANDLE_ACTION,
                               ZXPOL_HANDLE_RULE_HIVE,
                               ZXPOL_HANDLE_RULE,
                               ZXPOL_HANDLE_TASK,
                               0,
                               2,
                               0x10000100u,
                               0xffffffffu};

enum Kind : uint32_t {
    NONE = kNone,
    KEY = ZXREG_HANDLE_KEY,
    ADDRLIST_HIVE = ZXPOL_HANDLE_ADDRLIST_HIVE,
    ADDRLIST = ZXPOL_HANDLE_ADDRLIST,
    CLASS_HIVE = ZXPOL_HANDLE_CLASS_HIVE,
    CLASSIFICATION = ZXPOL_HANDLE_CLASSIFICATION,
    ACTION = ZXPOL_HANDLE_ACTION,
    RULE_HIVE = ZXPOL_HANDLE_RULE_HIVE,
    RULE = ZXPOL_HANDLE_RULE,
    TASK = ZXPOL_HANDLE_TASK,
};

// ---- arguments made from types --------------------------------------------------------------------------

// Memory that an argument points to, filled with a pattern so that a write into it is seen.
class Canvas {
public:
    Canvas() { std::memset(_bytes.data(), kPattern, _bytes.size()); }
    void* get() { return _bytes.data(); }
    bool isUntouched() const {
        for (const unsigned char byte : _bytes) {
            if (byte != kPattern) return false;
        }
        return true;
    }

private:
    static constexpr unsigned char kPattern = 0x5a;
    std::vector<unsigned char> _bytes = std::vector<unsigned char>(4096);
};

// What one call passes: the handles and the result as the probe wants them, anything else plausible.
struct Call {
    std::vector<_ZxPolComHandle*> handles;
    int* error = nullptr;
    size_t nextHandle = 0;
    std::vector<std::unique_ptr<Canvas>> canvases;

    bool isUntouched() const {
        for (const auto& canvas : canvases) {
            if (!canvas->isUntouched()) return false;
        }
        return true;
    }
};

template <class T>
T makeArgument(Call& call, bool isLast) {
    if constexpr (std::is_same_v<T, _ZxPolComHandle*>) {
        return call.handles.at(call.nextHandle++);
    } else if constexpr (std::is_same_v<T, int*>) {
        if (isLast) return call.error;
        call.canvases.push_back(std::make_unique<Canvas>());
        return static_cast<int*>(call.canvases.back()->get());
    } else if constexpr (std::is_same_v<T, const char*>) {
        return "\\name";
    } else if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>) {
        return nullptr;
    } else if constexpr (std::is_pointer_v<T>) {
        call.canvases.push_back(std::make_unique<Canvas>());
        return static_cast<T>(call.canvases.back()->get());
    } else {
        return T{};
    }
}

// ---- one row of the table ---------------------------------------------------------------------------------

struct Row {
    const char* name = nullptr;
    uint32_t kind = kNone;
    bool isInFrame = false;  // the last argument is the result, and there is a handle or a function that has none
    size_t handles = 0;
    // Calls the function; true when it returned nothing, 0 or null.
    std::function<bool(Call&)> call;

    // Closing and freeing functions run whatever the result holds.
    bool isClosing() const { return std::strncmp(name, "zxpol_close", 11) == 0; }
    bool isFreeing() const { return std::strncmp(name, "zxpol_free", 10) == 0; }
};

// By its name: the bytes of a row include some that were never written.
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

template <class Result, class... Parameters, size_t... Places>
bool callWith(Result (*function)(Parameters...), Call& call, std::index_sequence<Places...>) {
    constexpr size_t last = sizeof...(Parameters) - 1;
    // Braces: the arguments are made from left to right.
    std::tuple<Parameters...> arguments{makeArgument<Parameters>(call, Places == last)...};
    if constexpr (std::is_void_v<Result>) {
        std::apply(function, arguments);
        return true;
    } else {
        return std::apply(function, arguments) == Result{};
    }
}

template <class Result, class... Parameters>
Row makeRow(const char* name, uint32_t kind, Result (*function)(Parameters...)) {
    using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
    Row row;
    row.name = name;
    row.kind = kind;
    row.handles = (size_t{0} + ... + (std::is_same_v<Parameters, _ZxPolComHandle*> ? 1u : 0u));
    row.isInFrame = std::is_same_v<Last, int*>;
    row.call = [function](Call& call) { return callWith(function, call, std::index_sequence_for<Parameters...>()); };
    return row;
}

const std::vector<Row>& table() {
    static const std::vector<Row> rows = {
#define ZXPOL_FUNCTION(name, handle, family) makeRow(#name, Kind::handle, &name),
#include "frame/functions.def"
#undef ZXPOL_FUNCTION
    };
    return rows;
}

class Probe : public testing::TestWithParam<Row> {
protected:
    static constexpr int kEarlier = static_cast<int>(0x81021999);

    // A call with good-looking handles; their object is memory that no function may read.
    Call goodCall(int* error) {
        Call call;
        call.error = error;
        _second = _ZxPolComHandle{ZXPOL_HANDLE_ADDRLIST_HIVE, &_object};
        _first = _ZxPolComHandle{GetParam().kind, &_object};
        if (GetParam().handles > 0) call.handles.push_back(&_first);
        if (GetParam().handles > 1) call.handles.push_back(&_second);
        return call;
    }

    // Calls and expects `code`, with nothing returned and nothing written.
    void expectRefused(Call& call, int code, const char* what) {
        call.nextHandle = 0;
        *call.error = ZXPOL_S_OK;
        EXPECT_TRUE(GetParam().call(call)) << what;
        EXPECT_EQ(code, *call.error) << what;
        EXPECT_TRUE(call.isUntouched()) << what;
        EXPECT_EQ(0, std::memcmp(_object, std::string(sizeof _object, '\0').data(), sizeof _object)) << what;
    }

    _ZxPolComHandle _first{};
    _ZxPolComHandle _second{};
    char _object[512] = {};
};

class HandleProbe : public Probe {};
class TwoHandlesProbe : public Probe {};
class CloseProbe : public Probe {};

TEST_P(Probe, NullResultMakesTheCallANoOp) {
    if (GetParam().isFreeing()) {
        // They free whatever the result is; there is nothing to free here, and nothing to write to.
        zxpol_freeErrorConds(nullptr, nullptr);
        zxpol_freeMatchPair(nullptr, 3, nullptr);
        return;
    }
    Call call = goodCall(nullptr);
    EXPECT_TRUE(GetParam().call(call));
    EXPECT_TRUE(call.isUntouched());
}

TEST_P(Probe, EarlierFailureStays) {
    int error = kEarlier;
    if (GetParam().isFreeing()) {
        zxpol_freeMatchPair(nullptr, 3, &error);
        EXPECT_EQ(kEarlier, error);
        zxpol_freeErrorConds(nullptr, &error);
        EXPECT_EQ(ZXPOL_E_INVALID_ARG, error);
        return;
    }
    if (GetParam().isClosing()) {
        Call call;
        call.error = &error;
        call.handles = {makeHandle(nullptr, GetParam().kind)};
        GetParam().call(call);
        EXPECT_EQ(ZXPOL_S_OK, error);
        return;
    }
    Call call = goodCall(&error);
    EXPECT_TRUE(GetParam().call(call));
    EXPECT_EQ(kEarlier, error);
    EXPECT_TRUE(call.isUntouched());
}

TEST_P(HandleProbe, NullHandle) {
    int error = ZXPOL_S_OK;
    Call call = goodCall(&error);
    call.handles[0] = nullptr;
    expectRefused(call, ZXPOL_E_INVALID_ARG, "null handle");
}

TEST_P(HandleProbe, HandleOfEveryWrongKind) {
    int error = ZXPOL_S_OK;
    Call call = goodCall(&error);
    for (const uint32_t kind : kKinds) {
        if (kind == GetParam().kind) continue;
        _first.kind = kind;
        expectRefused(call, ZXPOL_E_WRONG_HANDLE, std::to_string(kind).c_str());
    }
}

TEST_P(HandleProbe, HandleOfNothing) {
    // A store key's object is the store's own business, and closing what designates nothing is no mistake.
    if (GetParam().kind == ZXREG_HANDLE_KEY || GetParam().isClosing()) return;
    int error = ZXPOL_S_OK;
    Call call = goodCall(&error);
    _first.object = nullptr;
    expectRefused(call, ZXPOL_E_WRONG_HANDLE, "null object");
}

TEST_P(TwoHandlesProbe, SecondHandle) {
    int error = ZXPOL_S_OK;
    Call call = goodCall(&error);
    call.handles[1] = nullptr;
    expectRefused(call, ZXPOL_E_INVALID_ARG, "null second handle");
    _first.kind = ZXPOL_HANDLE_TASK;
    expectRefused(call, ZXPOL_E_INVALID_ARG, "null comes before the kinds");
    _first.kind = GetParam().kind;
    call.handles[1] = &_second;
    for (const uint32_t kind : kKinds) {
        if (kind == ZXPOL_HANDLE_ADDRLIST_HIVE) continue;
        _second.kind = kind;
        expectRefused(call, ZXPOL_E_WRONG_HANDLE, std::to_string(kind).c_str());
    }
    _second = _ZxPolComHandle{ZXPOL_HANDLE_ADDRLIST_HIVE, nullptr};
    expectRefused(call, ZXPOL_E_WRONG_HANDLE, "null second object");
}

TEST_P(TwoHandlesProbe, SwappedHandles) {
    int error = ZXPOL_S_OK;
    Call call = goodCall(&error);
    std::swap(call.handles[0], call.handles[1]);
    expectRefused(call, ZXPOL_E_WRONG_HANDLE, "swapped");
}

TEST_P(CloseProbe, ClosesAHandleOfNothing) {
    int error = ZXPOL_S_OK;
    Call call;
    call.error = &error;
    call.handles = {makeHandle(nullptr, GetParam().kind)};
    ASSERT_NE(nullptr, call.handles[0]);
    GetParam().call(call);
    EXPECT_EQ(ZXPOL_S_OK, error);
}

TEST_P(CloseProbe, FreesNothingOfAWrongKind) {
    int error = kEarlier;
    Call call;
    call.error = &error;
    _ZxPolComHandle* handle = makeHandle(nullptr, 2);
    call.handles = {handle};
    GetParam().call(call);
    EXPECT_EQ(ZXPOL_E_WRONG_HANDLE, error);
    handle->kind = GetParam().kind;
    call.nextHandle = 0;
    GetParam().call(call);
    EXPECT_EQ(ZXPOL_S_OK, error);
}

template <class Predicate>
std::vector<Row> rowsThat(Predicate predicate) {
    std::vector<Row> found;
    for (const Row& row : table()) {
        if (row.isInFrame && predicate(row)) found.push_back(row);
    }
    return found;
}

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Interface, Probe, testing::ValuesIn(rowsThat([](const Row&) { return true; })), nameOf);
INSTANTIATE_TEST_SUITE_P(Interface, HandleProbe,
                         testing::ValuesIn(rowsThat([](const Row& row) { return row.handles > 0; })), nameOf);
INSTANTIATE_TEST_SUITE_P(Interface, TwoHandlesProbe,
                         testing::ValuesIn(rowsThat([](const Row& row) { return row.handles > 1; })), nameOf);
INSTANTIATE_TEST_SUITE_P(Interface, CloseProbe,
                         testing::ValuesIn(rowsThat([](const Row& row) { return row.isClosing(); })), nameOf);

}  // namespace
