// The table of flat functions, the public headers and the built library name the same functions.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>

#include "zxpolicy_explain.h"

namespace {

struct Row {
    std::string name;
    std::string kind;
    bool takesHandleFirst;
};

template <class Result, class First, class... Rest>
constexpr bool takesHandleFirst(Result (*)(First, Rest...)) {
    return std::is_same_v<First, _ZxPolComHandle*>;
}

// Naming each function here makes a row without a declaration fail to compile.
const Row kTable[] = {
#define ZXPOL_FUNCTION(name, handle, family) {#name, #handle, takesHandleFirst(&name)},
#include "frame/functions.def"
#undef ZXPOL_FUNCTION
};

std::string readHeader(const char* path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// The names declared with ZXPOL_API and an argument list.
std::set<std::string> declaredFunctions(const std::string& header) {
    std::set<std::string> names;
    const std::string mark = "\nZXPOL_API ";
    for (size_t at = header.find(mark); at != std::string::npos; at = header.find(mark, at + 1)) {
        const size_t open = header.find('(', at);
        size_t begin = open;
        while (std::isalnum(static_cast<unsigned char>(header[begin - 1])) != 0 || header[begin - 1] == '_')
            --begin;
        names.insert(header.substr(begin, open - begin));
    }
    return names;
}

TEST(FunctionTable, NamesWhatTheHeadersDeclare) {
    std::set<std::string> table;
    for (const Row& row : kTable)
        EXPECT_TRUE(table.insert(row.name).second) << "twice in the table: " << row.name;
    std::set<std::string> declared;
    for (const char* header : {ZX_HEADER, ZX_EXPLAIN_HEADER}) {
        const std::set<std::string> names = declaredFunctions(readHeader(header));
        EXPECT_FALSE(names.empty()) << header;
        declared.insert(names.begin(), names.end());
    }
    EXPECT_EQ(declared, table);
}

TEST(FunctionTable, HandleKindsAgreeWithTheFirstArguments) {
    for (const Row& row : kTable) {
        if (row.name == "checkVersion") continue;  // takes a key, but makes no checks on it
        EXPECT_EQ(row.kind != "NONE", row.takesHandleFirst) << row.name;
    }
}

TEST(FunctionTable, EveryFunctionIsExported) {
    void* library = dlopen("libzxpolicy.so.1", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, library) << dlerror();
    for (const Row& row : kTable)
        EXPECT_NE(nullptr, dlsym(library, row.name.c_str())) << row.name;
    dlclose(library);
}

}  // namespace
