// What of a secret stays in the memory of a process that uses a store.
#include <unistd.h>

#include <cstring>

#include "registry_support.h"
#include "support/memory_scan.h"

using namespace registry_test;
using zxtest::HiddenSecret;
using zxtest::MemoryFind;
using zxtest::MemoryScan;

namespace {

constexpr size_t secretSize = 40;

std::string regionsOf(const std::vector<MemoryFind>& found) {
    std::string text;
    for (const MemoryFind& find : found)
        text += find.region + "\n";
    return text;
}

void write(const Key& root, const HiddenSecret& secret) {
    secret.reveal([&](const char* plain) {
        int error = 0;
        zxreg_setValue(root.get(), "p", ZXREG_PROTECTED_STRING, plain, secretSize + 1, &error);
        EXPECT_GE(error, 0);
    });
}

// Reads it in all ways that there are; expects that it is the one.
void read(const Key& root, const HiddenSecret& secret) {
    char data[secretSize + 1];
    uint32_t size = sizeof data;
    int error = 0;
    zxreg_queryValue(root.get(), "p", nullptr, data, &size, &error);
    EXPECT_TRUE(error >= 0 && secret.isAt(data));
    explicit_bzero(data, sizeof data);
    char name[256];
    uint32_t nameSize = sizeof name;
    zxreg_enumValue(root.get(), 0, name, &nameSize, nullptr, data, &size, &error);
    EXPECT_TRUE(error >= 0 && secret.isAt(data));
    explicit_bzero(data, sizeof data);
}

// The flags of the memory at an address, as the kernel tells them.
std::string flagsAt(uint64_t address) {
    std::ifstream maps("/proc/self/smaps");
    bool isThere = false;
    for (std::string line; std::getline(maps, line);) {
        uint64_t begin = 0;
        uint64_t end = 0;
        char dash = 0;
        const bool isHead = static_cast<bool>(std::istringstream(line) >> std::hex >> begin >> dash >> end);
        if (isHead && dash == '-') isThere = begin <= address && address < end;
        if (isThere && line.rfind("VmFlags:", 0) == 0) return line + " ";
    }
    return "";
}

class SecretMemory : public testing::TestWithParam<std::string> {
protected:
    SecretMemory() : path(folder / "store.db"), location(GetParam() == "memory" ? "memory:" : "sqlite:" + path) {}

    const Folder folder;
    const std::string path;
    const std::string location;
    const HiddenSecret secret = HiddenSecret::random(secretSize);
    MemoryScan scan;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(On, SecretMemory, testing::Values("memory", "sqlite"), nameOfStore);

TEST_P(SecretMemory, TheSearchFindsWhatIsThere) {
    secret.reveal([&](const char* plain) {
        const std::vector<MemoryFind> found = scan.find(secret);
        ASSERT_EQ(found.size(), 1u) << regionsOf(found);
        EXPECT_EQ(found[0].address, reinterpret_cast<uintptr_t>(plain));
    });
    EXPECT_TRUE(scan.find(secret).empty());
}

TEST_P(SecretMemory, AProtectedStringIsNowhereButWithTheCaller) {
    Key root = openStore(location);
    write(root, secret);
    EXPECT_TRUE(scan.find(secret).empty()) << regionsOf(scan.find(secret));
    read(root, secret);
    EXPECT_TRUE(scan.find(secret).empty()) << regionsOf(scan.find(secret));
    EXPECT_GE(begin(root), 0);
    write(root, secret);
    EXPECT_GE(setText(root, "other", "x"), 0);
    EXPECT_GE(cancel(root), 0);
    EXPECT_GE(unset(root, "p"), 0);
    EXPECT_EQ(readCode(root, "p"), ZXREG_E_NOT_FOUND);
    EXPECT_TRUE(scan.find(secret).empty()) << regionsOf(scan.find(secret));
    root.close();
    EXPECT_TRUE(scan.find(secret).empty()) << regionsOf(scan.find(secret));
}

TEST_P(SecretMemory, AFailureDoesNotTellIt) {
    const Key root = openStore(location);
    write(root, secret);
    if (GetParam() == "sqlite") {
        EXPECT_EQ(truncate((path + ".key").c_str(), 5), 0);
        secret.reveal([&](const char* plain) {
            int error = 0;
            zxreg_setValue(root.get(), "p", ZXREG_PROTECTED_STRING, plain, secretSize + 1, &error);
            EXPECT_EQ(error, ZXREG_E_SECRET);
            EXPECT_EQ(std::strstr(zxreg_lastErrorText(), plain), nullptr);
        });
    }
    char little[secretSize];
    uint32_t size = sizeof little;
    int error = 0;
    zxreg_queryValue(root.get(), "p", nullptr, little, &size, &error);
    EXPECT_EQ(error, ZXREG_E_BUFFER_TOO_SMALL);
    EXPECT_TRUE(scan.find(secret).empty()) << regionsOf(scan.find(secret));
}

TEST(SecretKeyMemory, TheKeyIsInOnePlaceThatNoCoreFileShows) {
    const Folder folder;
    const std::string path = folder / "store.db";
    const HiddenSecret secret = HiddenSecret::random(secretSize);
    MemoryScan scan;
    Key root = openStore("sqlite:" + path);
    write(root, secret);
    read(root, secret);
    const HiddenSecret key = HiddenSecret::ofFile(path + ".key", 32);
    ASSERT_EQ(key.size(), 32u);
    const std::vector<MemoryFind> found = scan.find(key);
    ASSERT_EQ(found.size(), 1u) << regionsOf(found);
    EXPECT_NE(flagsAt(found[0].address).find(" dd "), std::string::npos) << flagsAt(found[0].address);
    root.close();
    EXPECT_TRUE(scan.find(key).empty()) << regionsOf(scan.find(key));
}
