#include "registry_support.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace registry_test {
namespace {

Key finish(_ZxPolComHandle* handle, int error, int* code, const std::string& what) {
    if (code != nullptr) {
        *code = error;
    } else {
        EXPECT_GE(error, 0) << what << ": " << std::hex << error;
    }
    EXPECT_EQ(handle != nullptr, error >= 0) << what;
    EXPECT_TRUE(handle == nullptr || handle->kind == ZXREG_HANDLE_KEY);
    return Key(handle);
}

std::string hex(int code) {
    char bytes[16];
    std::snprintf(bytes, sizeof bytes, "!%08x", static_cast<unsigned>(code));
    return bytes;
}

void dumpInto(const Key& key, const std::string& path, std::string& all) {
    for (const std::string& name : values(key)) {
        const std::optional<Stored> value = read(key, name);
        all.append(path).append(":").append(name).append("=");
        all += value ? std::to_string(value->type).append(",").append(value->bytes) : hex(readCode(key, name));
        all += "\n";
    }
    for (const std::string& name : subkeys(key)) {
        std::string below = path;
        below.append("\\").append(name);
        all.append(below).append("\n");
        int code = 0;
        const Key child = openKey(key, name, &code);
        if (child) {
            dumpInto(child, below, all);
        } else {
            all.append(hex(code)).append("\n");
        }
    }
}

}  // namespace

void Key::close() {
    if (_key == nullptr) return;
    int error = 0;
    zxreg_closeKey(std::exchange(_key, nullptr), &error);
    EXPECT_GE(error, 0);
}

Key openStore(const std::string& location, int* code) {
    int error = 0;
    _ZxPolComHandle* root = zxreg_openStore(location.c_str(), &error);
    const bool canTellWhy = error < 0 && &zxreg_lastErrorText != nullptr;
    return finish(root, error, code, location + " " + (canTellWhy ? zxreg_lastErrorText() : ""));
}

Key openKey(const Key& from, const std::string& path, int* code) {
    int error = 0;
    _ZxPolComHandle* key = zxreg_openKey(from.get(), path.c_str(), &error);
    return finish(key, error, code, "opening " + path);
}

Key createKey(const Key& from, const std::string& path, int* code) {
    int error = 0;
    _ZxPolComHandle* key = zxreg_createKey(from.get(), path.c_str(), &error);
    return finish(key, error, code, "creating " + path);
}

int openCode(const Key& from, const std::string& path) {
    int code = 0;
    openKey(from, path, &code);
    return code;
}

int createCode(const Key& from, const std::string& path) {
    int code = 0;
    createKey(from, path, &code);
    return code;
}

int deleteKey(const Key& from, const std::string& path) {
    int error = 0;
    zxreg_deleteKey(from.get(), path.c_str(), &error);
    return error;
}

int set(const Key& key, const std::string& name, uint32_t type, const std::string& bytes) {
    int error = 0;
    zxreg_setValue(key.get(), name.c_str(), type, bytes.data(), static_cast<uint32_t>(bytes.size()), &error);
    return error;
}

int setText(const Key& key, const std::string& name, const std::string& text) {
    return set(key, name, ZXREG_STRING, std::string(text.c_str(), text.size() + 1));
}

int unset(const Key& key, const std::string& name) {
    int error = 0;
    zxreg_deleteValue(key.get(), name.c_str(), &error);
    return error;
}

int readCode(const Key& key, const std::string& name) {
    int error = 0;
    uint32_t size = 0;
    zxreg_queryValue(key.get(), name.c_str(), nullptr, nullptr, &size, &error);
    if (error < 0) return error;
    std::string bytes(size, '\0');
    zxreg_queryValue(key.get(), name.c_str(), nullptr, bytes.data(), &size, &error);
    return error;
}

std::optional<Stored> read(const Key& key, const std::string& name) {
    int error = 0;
    uint32_t size = 0;
    zxreg_queryValue(key.get(), name.c_str(), nullptr, nullptr, &size, &error);
    if (error < 0) return std::nullopt;
    Stored stored{0xffffffff, std::string(size, '?')};
    zxreg_queryValue(key.get(), name.c_str(), &stored.type, stored.bytes.data(), &size, &error);
    if (error < 0) return std::nullopt;
    EXPECT_EQ(size, stored.bytes.size());
    return stored;
}

std::string text(const Key& key, const std::string& name) {
    const std::optional<Stored> stored = read(key, name);
    return stored ? std::string(stored->bytes.c_str()) : hex(readCode(key, name));
}

uint64_t stamp(const Key& key) {
    int error = 0;
    const uint64_t number = zxreg_stamp(key.get(), &error);
    EXPECT_EQ(number != 0, error >= 0);
    return number;
}

uint64_t identity(const Key& key) {
    int error = 0;
    const uint64_t number = zxreg_identity(key.get(), &error);
    EXPECT_EQ(number != 0, error >= 0);
    return number;
}

int begin(const Key& key) {
    int error = 0;
    zxreg_beginUpdate(key.get(), &error);
    return error;
}

int end(const Key& key) {
    int error = 0;
    zxreg_endUpdate(key.get(), &error);
    return error;
}

int cancel(const Key& key) {
    int error = 0;
    zxreg_cancelUpdate(key.get(), &error);
    return error;
}

std::vector<std::string> subkeys(const Key& key) {
    std::vector<std::string> names;
    for (uint32_t i = 0;; ++i) {
        char name[256];
        uint32_t size = sizeof name;
        int error = 0;
        zxreg_enumSubkey(key.get(), i, name, &size, &error);
        if (error < 0) {
            EXPECT_EQ(reason(error), noMoreItems);
            return names;
        }
        EXPECT_EQ(size, std::string(name).size());
        names.emplace_back(name);
    }
}

std::vector<std::string> values(const Key& key) {
    std::vector<std::string> names;
    for (uint32_t i = 0;; ++i) {
        char name[256];
        uint32_t size = sizeof name;
        int error = 0;
        zxreg_enumValue(key.get(), i, name, &size, nullptr, nullptr, nullptr, &error);
        if (error < 0) {
            EXPECT_EQ(reason(error), noMoreItems);
            return names;
        }
        EXPECT_EQ(size, std::string(name).size());
        names.emplace_back(name);
    }
}

std::string dump(const Key& key) {
    std::string all;
    dumpInto(key, "", all);
    return all;
}

void deleteAllBelow(const Key& key) {
    for (const std::string& name : subkeys(key)) {
        deleteAllBelow(openKey(key, name));
        EXPECT_GE(deleteKey(key, name), 0) << name;
    }
}

// In memory where there is such a place: the tests write much more often than a disk likes to be synced.
Folder::Folder() {
    const char* place = std::getenv("TMPDIR");
    if (place == nullptr) place = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    _path = std::string(place) + "/zxreg_contract.XXXXXX";
    if (mkdtemp(_path.data()) == nullptr) throw std::runtime_error("cannot make " + _path);
}

Folder::~Folder() {
    if (DIR* folder = opendir(_path.c_str())) {
        while (const dirent* entry = readdir(folder)) {
            const std::string path = *this / entry->d_name;
            if (unlink(path.c_str()) != 0) rmdir(path.c_str());
        }
        closedir(folder);
    }
    rmdir(_path.c_str());
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const std::string& path, const std::string& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    EXPECT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size())) << path;
    close(file);
}

std::vector<std::string> storesToTest() {
    if (std::getenv("ZXREG_CONTRACT_LOCATION") != nullptr) return {"given"};
    return {"memory", "sqlite"};
}

void StoreTest::SetUp() {
    static int number = 0;
    _folder = std::make_unique<Folder>();
    const std::string location = GetParam() == "given"    ? std::getenv("ZXREG_CONTRACT_LOCATION")
                                 : GetParam() == "memory" ? "memory:"
                                                          : "sqlite:" + *_folder / "store.db";
    root = openStore(location);
    ASSERT_TRUE(root);
    _name = "contract-" + std::to_string(getpid()) + "-" + std::to_string(++number);
    top = createKey(root, _name);
    ASSERT_TRUE(top);
}

void StoreTest::TearDown() {
    if (top) {
        deleteAllBelow(top);
        top.close();
        EXPECT_GE(deleteKey(root, _name), 0);
    }
    root.close();
}

}  // namespace registry_test
