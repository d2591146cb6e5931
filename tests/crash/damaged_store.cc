#include "crash/damaged_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "crash/disk.h"

namespace crash {
namespace {

// Of this process.
const bool isUnsynced = (stopSyncing(), true);

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.flush().good()) << path;
    // Whatever the umask: a file that others may write to is not opened as a store.
    EXPECT_EQ(chmod(path.c_str(), 0600), 0) << path;
}

void flipBit(std::string& bytes, size_t at, model::RandomSource& random) {
    bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ (1u << random.below(8)));
}

bool tellsOfDamage(int code) {
    return code == ZXREG_E_CORRUPT || code == ZXREG_E_FOREIGN || code == ZXREG_E_IO || code == ZXREG_E_PERMISSION;
}

DamagedStore::DamagedStore() {
    writeAddressFiles(_folder.path());
}

void DamagedStore::lay(const std::string& database, const std::string& log, const std::string& sharedMemory) {
    writeFile(path(), database);
    unlink((path() + "-wal").c_str());
    unlink((path() + "-shm").c_str());
    if (!log.empty()) writeFile(path() + "-wal", log);
    if (!sharedMemory.empty()) writeFile(path() + "-shm", sharedMemory);
}

std::string DamagedStore::open() {
    const PolicyEditor policy("sqlite:" + path(), _folder.path());
    if (policy.error() >= 0) return policy.text();
    EXPECT_TRUE(tellsOfDamage(policy.error())) << zxtest::codeText(policy.error());
    EXPECT_NE(std::string(zxreg_lastErrorText()).find(path()), std::string::npos) << zxreg_lastErrorText();
    return "";
}

int DamagedStore::change() {
    PolicyEditor policy("sqlite:" + path(), _folder.path());
    return policy.error() < 0 ? policy.error() : policy.importAddresses("staff", 2);
}

}  // namespace crash
