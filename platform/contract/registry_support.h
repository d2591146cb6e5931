// What the tests of the store share: keys that close themselves, short forms of the operations, and stores to run on.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zxregistry.h"

// A store need not have these: the program starts without them, and the tests of what is missing are left out by name.
#pragma weak zxreg_beginUpdate
#pragma weak zxreg_endUpdate
#pragma weak zxreg_cancelUpdate
#pragma weak zxreg_stamp
#pragma weak zxreg_identity
#pragma weak zxreg_lastErrorText

namespace registry_test {

// The low 16 bits, which are all that the interface fixes of three failing codes.
constexpr int tooSmall = 6;
constexpr int noMoreItems = 12;
constexpr int notFound = 0x1804;
inline int reason(int code) {
    return code & 0xffff;
}
#define EXPECT_REASON(code, wanted)                           \
    do {                                                      \
        const int codeOfCall = (code);                        \
        EXPECT_LT(codeOfCall, 0);                             \
        EXPECT_EQ(registry_test::reason(codeOfCall), wanted); \
    } while (false)

// An open key, closed when left.
class Key {
public:
    Key() = default;
    explicit Key(_ZxPolComHandle* key) : _key(key) {}
    Key(Key&& other) noexcept : _key(std::exchange(other._key, nullptr)) {}
    Key& operator=(Key&& other) noexcept {
        std::swap(_key, other._key);
        return *this;
    }
    ~Key() { close(); }

    void close();
    _ZxPolComHandle* get() const { return _key; }
    explicit operator bool() const { return _key != nullptr; }

private:
    _ZxPolComHandle* _key = nullptr;
};

// A value as it was read.
struct Stored {
    uint32_t type;
    std::string bytes;
    bool operator==(const Stored& other) const { return type == other.type && bytes == other.bytes; }
};

// Without a place for the code, these expect success.
Key openStore(const std::string& location, int* code = nullptr);
Key openKey(const Key& from, const std::string& path, int* code = nullptr);
Key createKey(const Key& from, const std::string& path, int* code = nullptr);

int openCode(const Key& from, const std::string& path);
int createCode(const Key& from, const std::string& path);
int deleteKey(const Key& from, const std::string& path);
int set(const Key& key, const std::string& name, uint32_t type, const std::string& bytes);
// A string, with its NUL.
int setText(const Key& key, const std::string& name, const std::string& text);
int unset(const Key& key, const std::string& name);
int readCode(const Key& key, const std::string& name);
std::optional<Stored> read(const Key& key, const std::string& name);
// The text of a string value, or the code of the failure.
std::string text(const Key& key, const std::string& name);
uint64_t stamp(const Key& key);
uint64_t identity(const Key& key);
int begin(const Key& key);
int end(const Key& key);
int cancel(const Key& key);

// The names in the store's order. Expects that the enumeration ends as it should.
std::vector<std::string> subkeys(const Key& key);
std::vector<std::string> values(const Key& key);

// All that lies at and below a key, as text; a failure anywhere is part of it as "!code".
std::string dump(const Key& key);

void deleteAllBelow(const Key& key);

// A folder that is removed with its files.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string operator/(const std::string& name) const { return _path + "/" + name; }
    const std::string& path() const { return _path; }

private:
    std::string _path;
};

std::string readFile(const std::string& path);
// A new file is its owner's alone, whatever the umask: other files are refused before anybody looks what is in them.
void writeFile(const std::string& path, const std::string& bytes);

// The stores that the tests of the contract run on. ZXREG_CONTRACT_LOCATION replaces ours by another one, whose
// implementation needs zxreg_openStore and the nine operations.
std::vector<std::string> storesToTest();

// Every test gets a key of its own, empty, below the root of the store.
class StoreTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override;
    void TearDown() override;

    Key root;
    Key top;

private:
    std::unique_ptr<Folder> _folder;
    std::string _name;
};

inline std::string nameOfStore(const testing::TestParamInfo<std::string>& info) {
    return info.param;
}
#define ON_EVERY_STORE(suite) \
    INSTANTIATE_TEST_SUITE_P(On, suite, testing::ValuesIn(registry_test::storesToTest()), registry_test::nameOfStore)

}  // namespace registry_test
