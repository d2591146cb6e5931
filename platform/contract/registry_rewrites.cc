// One value written again and again within an update, at every depth of nesting: only the last state counts, and what
// is taken back is exactly what was written since the beginning.
#include <random>

#include "registry_support.h"
#include "registry_worker.h"

using namespace registry_test;

namespace {

void write(const Key& key, const std::string& name, int from, int to) {
    for (int i = from; i <= to; ++i) {
        EXPECT_EQ(setText(key, name, std::to_string(i)), ZXREG_S_OK);
    }
}

}  // namespace

class Rewrites : public StoreTest {};
ON_EVERY_STORE(Rewrites);

TEST_P(Rewrites, TheLastOneStays) {
    EXPECT_GE(setText(top, "old", "before"), 0);
    EXPECT_GE(begin(top), 0);
    write(top, "old", 1, 80);
    write(top, "new", 1, 80);
    EXPECT_EQ(text(top, "new"), "80");
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "old"), "80");
    EXPECT_EQ(text(top, "new"), "80");
    EXPECT_EQ(values(top), (std::vector<std::string>{"old", "new"}));
}

TEST_P(Rewrites, AreTakenBackTogether) {
    EXPECT_GE(setText(top, "old", "before"), 0);
    EXPECT_GE(begin(top), 0);
    write(top, "old", 1, 3);
    write(top, "new", 1, 3);
    EXPECT_EQ(cancel(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "old"), "before");
    EXPECT_EQ(values(top), std::vector<std::string>{"old"});
}

TEST_P(Rewrites, ACancelledInnerUpdateLeavesTheOuterWrites) {
    EXPECT_GE(begin(top), 0);
    write(top, "v", 1, 2);
    EXPECT_GE(begin(top), 0);
    write(top, "v", 3, 4);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(text(top, "v"), "2");
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(cancel(top), 0);
    write(top, "v", 5, 6);
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "v"), "6");
}

TEST_P(Rewrites, ACancelledOuterUpdateTakesTheInnerWritesBack) {
    EXPECT_GE(setText(top, "v", "before"), 0);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(begin(top), 0);
    write(top, "v", 1, 2);
    EXPECT_GE(end(top), 0);
    write(top, "v", 3, 4);
    EXPECT_GE(begin(top), 0);
    write(top, "v", 5, 6);
    EXPECT_GE(end(top), 0);
    write(top, "v", 7, 8);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(text(top, "v"), "before");
}

TEST_P(Rewrites, TheMiddleOfThreeLevelsIsCancelled) {
    EXPECT_GE(begin(top), 0);
    write(top, "v", 1, 2);
    EXPECT_GE(begin(top), 0);
    write(top, "v", 3, 4);
    EXPECT_GE(begin(top), 0);
    write(top, "v", 5, 6);
    EXPECT_GE(end(top), 0);
    write(top, "v", 7, 8);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(text(top, "v"), "2");
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "v"), "2");
}

TEST_P(Rewrites, OfTheSameNameBelowAnotherKeyAreOthers) {
    const Key one = createKey(top, "one");
    const Key two = createKey(top, "two");
    EXPECT_GE(begin(top), 0);
    write(one, "v", 1, 2);
    write(two, "v", 3, 4);
    write(one, "v", 5, 6);
    EXPECT_GE(end(top), 0);
    EXPECT_EQ(text(one, "v"), "6");
    EXPECT_EQ(text(two, "v"), "4");
}

// Random updates of every kind of change against what was there at the beginning of each; with every outermost end the
// store is closed, and read again as a whole, with all its checksums and totals.
class RandomRewrites : public testing::TestWithParam<std::string> {
protected:
    RandomRewrites() : location(GetParam() == "memory" ? "memory:rewrites" : "sqlite:" + folder / "store.db") {
        if (GetParam() == "memory") keep = openStore(location);
    }

    unsigned pick(unsigned count) { return static_cast<unsigned>(random() % count); }

    void change(const Key& root) {
        const std::string path = "k" + std::to_string(pick(3));
        const std::string name = "v" + std::to_string(pick(2));
        int code = 0;
        const Key key = openKey(root, path, &code);
        const unsigned kind = pick(12);
        if (!key || kind == 0) {
            createKey(root, path);
        } else if (kind == 1) {
            deleteKey(root, path);
        } else if (kind == 2) {
            unset(key, name);
        } else if (kind == 3) {
            EXPECT_EQ(set(key, name, ZXREG_PROTECTED_STRING, "secret" + std::to_string(pick(100))), ZXREG_S_OK);
        } else {
            for (unsigned i = pick(4) + 1; i-- > 0;) {
                EXPECT_EQ(setText(key, name, std::to_string(pick(100000))), ZXREG_S_OK);
            }
        }
    }

    // Leaves at least one update less open than there are states.
    void runUpdate(const Key& root) {
        std::vector<std::string> before{dump(root)};
        EXPECT_GE(begin(root), 0);
        while (!before.empty()) {
            const unsigned what = pick(10);
            if (what == 0 && before.size() < 4) {
                before.push_back(dump(root));
                EXPECT_GE(begin(root), 0);
            } else if (what == 1) {
                EXPECT_EQ(end(root), ZXREG_S_OK);
                before.pop_back();
            } else if (what == 2 && (before.size() > 1 || pick(4) == 0)) {
                EXPECT_EQ(cancel(root), ZXREG_S_OK);
                EXPECT_EQ(dump(root), before.back());
                before.pop_back();
            } else {
                change(root);
            }
        }
    }

    const Folder folder;
    const std::string location;
    Key keep;
    std::mt19937 random{20};
};
INSTANTIATE_TEST_SUITE_P(On, RandomRewrites, testing::Values("memory", "sqlite"), nameOfStore);

TEST_P(RandomRewrites, LeaveExactlyWhatWasNotTakenBack) {
    for (int round = 0; round < 150; ++round) {
        std::string after;
        {
            const Key root = openStore(location);
            runUpdate(root);
            runUpdate(root);
            after = dump(root);
        }
        ASSERT_EQ(dump(openStore(location)), after) << "round " << round;
    }
}

class SqliteRewrites : public testing::Test {
protected:
    SqliteRewrites() : location("sqlite:" + folder / "store.db"), root(openStore(location)) {
        EXPECT_GE(setText(createKey(root, "A"), "v", "x"), 0);
    }

    // Runs commands in a process whose disk is full after 60000 bytes.
    std::vector<std::string> onFullDisk(std::vector<std::string> commands) {
        const std::string before = dump(root);
        root.close();
        commands.insert(commands.begin(), {location, "limit", "60000"});
        Worker worker(commands);
        std::vector<std::string> lines;
        for (std::string line = worker.line(); !line.empty(); line = worker.line()) {
            lines.push_back(line);
        }
        worker.wait();
        root = openStore(location);
        isUnchanged = dump(root) == before;
        return lines;
    }

    const Folder folder;
    const std::string location;
    Key root;
    bool isUnchanged = false;
    // More than the database keeps in memory, so that the write itself fails and not only the commit.
    const std::string tooLong = "4000000";
    const std::string full = "error 81021901";
};

TEST_F(SqliteRewrites, OtherProcessesSeeTheLastOneOnly) {
    const Key key = openKey(root, "A");
    EXPECT_GE(begin(root), 0);
    write(key, "v", 1, 80);
    EXPECT_EQ(work({location, "get", "A", "v"}), std::vector<std::string>{"x"});
    write(key, "w", 1, 80);
    EXPECT_EQ(work({location, "get", "A", "v"}), std::vector<std::string>{"x"});
    EXPECT_GE(end(root), 0);
    EXPECT_EQ(work({location, "get", "A", "v", "get", "A", "w"}), (std::vector<std::string>{"80", "80"}));
    work({location, "begin", "set", "A", "v", "a", "set", "A", "v", "b", "begin", "set", "A", "v", "c", "cancel",
          "end"});
    EXPECT_EQ(text(key, "v"), "b");
}

TEST_F(SqliteRewrites, AProtectedStringMayComeAndGo) {
    EXPECT_GE(begin(root), 0);
    EXPECT_GE(set(root, "kept", ZXREG_PROTECTED_STRING, "one"), 0);
    EXPECT_GE(set(root, "kept", ZXREG_PROTECTED_STRING, "two"), 0);
    EXPECT_GE(set(root, "plain", ZXREG_PROTECTED_STRING, "three"), 0);
    EXPECT_GE(setText(root, "plain", "four"), 0);
    EXPECT_EQ(text(root, "kept"), "two");
    EXPECT_GE(end(root), 0);
    const std::string before = dump(root);
    root.close();
    root = openStore(location);
    EXPECT_EQ(dump(root), before);
    EXPECT_EQ(text(root, "kept"), "two");
    EXPECT_EQ(text(root, "plain"), "four");
}

TEST_F(SqliteRewrites, AFailureShowsAtTheEnd) {
    const auto lines = onFullDisk({"begin", "set", "A", "w", "small", "long", "A", "v", tooLong, "say", "taken", "end",
                                   "get", "A", "v", "get", "A", "w"});
    EXPECT_EQ(lines, (std::vector<std::string>{"taken", full, "x", "error 81021804"}));
    EXPECT_TRUE(isUnchanged);
}

TEST_F(SqliteRewrites, AFailureShowsAtTheNextChange) {
    const std::vector<std::vector<std::string>> nextChanges = {
        {"set", "A", "w", "small"}, {"unset", "A", "v"}, {"create", "B"}, {"delete", "A"}};
    for (const std::vector<std::string>& next : nextChanges) {
        std::vector<std::string> commands{"begin", "set", "A", "a", "small", "long", "A", "v", tooLong};
        commands.insert(commands.end(), next.begin(), next.end());
        commands.insert(commands.end(), {"set", "A", "v", "again", "end", "get", "A", "v"});
        EXPECT_EQ(onFullDisk(commands), (std::vector<std::string>{full, full, full, "x"})) << next[0];
        EXPECT_TRUE(isUnchanged) << next[0];
    }
}

TEST_F(SqliteRewrites, AFailureInsideIsNotMendedByCancellingIt) {
    const auto lines =
        onFullDisk({"begin", "set", "A",      "a",   "small", "begin", "long", "A",   "v", tooLong, "unset",
                    "A",     "v",   "cancel", "get", "A",     "v",     "end",  "get", "A", "a"});
    EXPECT_EQ(lines, (std::vector<std::string>{full, "x", full, "error 81021804"}));
    EXPECT_TRUE(isUnchanged);
}

TEST_F(SqliteRewrites, WhatIsReplacedOrCancelledBeforeItIsRecordedCannotFail) {
    EXPECT_TRUE(onFullDisk({"begin", "long", "A", "v", tooLong, "set", "A", "v", "small", "end"}).empty());
    EXPECT_EQ(text(openKey(root, "A"), "v"), "small");
    EXPECT_TRUE(
        onFullDisk({"begin", "set", "A", "w", "kept", "begin", "long", "A", "w", tooLong, "cancel", "end"}).empty());
    EXPECT_EQ(text(openKey(root, "A"), "w"), "kept");
    EXPECT_TRUE(onFullDisk({"begin", "long", "A", "w", tooLong, "cancel", "set", "A", "w", "after"}).empty());
    EXPECT_EQ(text(openKey(root, "A"), "w"), "after");
}
