// A damaged file gives an error or exactly the right content, never an empty or a partial store.
#include <sqlite3.h>
#include <unistd.h>

#include "registry_support.h"

using namespace registry_test;

namespace {

class SqliteDamage : public testing::Test {
protected:
    SqliteDamage() : path(folder / "store.db"), location("sqlite:" + path) {
        const Key root = openStore(location);
        EXPECT_GE(begin(root), 0);
        for (int i = 0; i < 60; ++i) {
            const Key key = createKey(root, "key" + std::to_string(i));
            EXPECT_GE(setText(key, "displayName", "The name of number " + std::to_string(i)), 0);
            EXPECT_GE(set(key, "order", ZXREG_NUMBER, "1234"), 0);
            createKey(key, "below");
        }
        EXPECT_GE(set(root, "long", ZXREG_MULTI_STRING, std::string(9000, 'm')), 0);
        EXPECT_GE(set(root, "secret", ZXREG_PROTECTED_STRING, "secret"), 0);
        EXPECT_GE(end(root), 0);
        EXPECT_GE(deleteKey(root, "key3\\below"), 0);
        content = dump(root);
    }

    // Counts what became of a damaged file.
    void tryOut(const std::string& bytes, const std::string& what) {
        for (const char* suffix : {"-wal", "-shm"}) {
            unlink((path + suffix).c_str());
        }
        writeFile(path, bytes);
        int code = 0;
        const Key root = openStore(location, &code);
        if (!root) {
            ++refused;
            EXPECT_TRUE(code == ZXREG_E_CORRUPT || code == ZXREG_E_FOREIGN || code == ZXREG_E_IO ||
                        code == ZXREG_E_PERMISSION)
                << what << std::hex << code;
            return;
        }
        ++sound;
        EXPECT_EQ(dump(root), content) << what;
    }

    int refusedAfter(const std::string& sql) {
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        EXPECT_GT(sqlite3_total_changes(database), 0) << sql;
        sqlite3_close(database);
        int code = 0;
        openStore(location, &code);
        EXPECT_NE(std::string(zxreg_lastErrorText()).find(path), std::string::npos) << zxreg_lastErrorText();
        return code;
    }

    const Folder folder;
    const std::string path;
    const std::string location;
    std::string content;
    int refused = 0;
    int sound = 0;
};

}  // namespace

TEST_F(SqliteDamage, FlippedBytes) {
    const std::string whole = readFile(path);
    for (size_t at = 0; at < whole.size(); at += at < 100 ? 1 : 53) {
        for (const int flip : {0x01, 0x80, 0xff}) {
            if (at >= 100 && flip != (at % 2 == 0 ? 0x01 : 0xff)) continue;
            std::string damaged = whole;
            damaged[at] = static_cast<char>(damaged[at] ^ flip);
            tryOut(damaged, "byte " + std::to_string(at) + " ^ " + std::to_string(flip));
        }
    }
    EXPECT_GT(refused, 200);
    EXPECT_GT(sound, 100);
}

TEST_F(SqliteDamage, CutFiles) {
    const std::string whole = readFile(path);
    for (size_t size = 0; size < whole.size(); size += 1024) {
        tryOut(whole.substr(0, size), "cut to " + std::to_string(size));
    }
    tryOut(whole.substr(0, whole.size() - 1), "cut by one");
    EXPECT_GT(refused, 10);
}

TEST_F(SqliteDamage, PagesOfZeros) {
    const std::string whole = readFile(path);
    for (size_t at = 0; at < whole.size(); at += 4096) {
        std::string damaged = whole;
        damaged.replace(at, 4096, 4096, '\0');
        tryOut(damaged, "page at " + std::to_string(at));
    }
    EXPECT_GT(refused, 5);
}

// Free pages are not read; a page that is in use and listed among them would be written over.
TEST_F(SqliteDamage, OfTheListOfFreePagesKeepsTheStoreFromBeingChanged) {
    {
        const Key root = openStore(location);
        EXPECT_GE(unset(root, "long"), 0);
        content = dump(root);
    }
    std::string bytes = readFile(path);
    const auto numberAt = [&bytes](size_t at) {
        return static_cast<size_t>(static_cast<unsigned char>(bytes[at + 2])) << 8 |
               static_cast<unsigned char>(bytes[at + 3]);
    };
    const size_t list = (numberAt(32) - 1) * 4096;
    ASSERT_GT(numberAt(32), 1u) << "no free pages";
    ASSERT_GT(numberAt(list + 4), 0u);
    bytes.replace(list + 4 + 4 * numberAt(list + 4), 4, std::string_view("\0\0\0\3", 4));
    tryOut(bytes, "page 3 listed as free");
    EXPECT_EQ(sound, 1);
    EXPECT_EQ(set(openStore(location), "long", ZXREG_STRING, std::string(20000, 'x')), ZXREG_E_CORRUPT);
    EXPECT_EQ(dump(openStore(location)), content);
}

TEST_F(SqliteDamage, RowsThatAreMissingOrAlteredOrTooMany) {
    const std::string whole = readFile(path);
    for (const char* sql :
         {"DELETE FROM value WHERE id = 7", "DELETE FROM node WHERE id = (SELECT max(id) FROM node)",
          "DELETE FROM value", "DELETE FROM node; DELETE FROM value", "DELETE FROM meta",
          "UPDATE value SET data = x'00' WHERE id = 7", "UPDATE value SET type = 3 WHERE id = 7",
          "UPDATE value SET node = 1 WHERE id = 7", "UPDATE value SET name = x'41' WHERE id = 7",
          "UPDATE value SET id = 100000 WHERE id = 7", "UPDATE node SET name = x'41' WHERE id = 5",
          "UPDATE node SET parent = 1 WHERE id = (SELECT max(id) FROM node)",
          "UPDATE node SET checksum = checksum + 1 WHERE id = 5", "UPDATE meta SET nodes = nodes - 1",
          "UPDATE meta SET revision = 0", "UPDATE meta SET next_node = 2", "UPDATE meta SET next_value = 2",
          "INSERT INTO value SELECT 1000, node, type, x'42', checksum, data FROM value WHERE id = 7",
          "INSERT INTO node SELECT 1000, parent, x'42', checksum FROM node WHERE id = 5"}) {
        writeFile(path, whole);
        EXPECT_EQ(refusedAfter(sql), ZXREG_E_CORRUPT) << sql;
    }
}

TEST_F(SqliteDamage, ThatComesWhileTheStoreIsOpenFailsEveryReadUntilItIsMended) {
    const Key root = openStore(location);
    EXPECT_EQ(dump(root), content);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    const auto run = [&](const char* sql) {
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    };
    run("UPDATE meta SET sum = sum + 1");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(openCode(root, "key1"), ZXREG_E_CORRUPT);
        EXPECT_EQ(setText(root, "v", "x"), ZXREG_E_CORRUPT);
    }
    run("UPDATE meta SET sum = sum - 1");
    EXPECT_EQ(dump(root), content);
    sqlite3_close(database);
}
