// Two processes on one store: each sees what the other has committed, and nothing else.
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "registry_support.h"
#include "registry_worker.h"

using namespace registry_test;

class Processes : public testing::Test {
protected:
    Processes() : location("sqlite:" + folder / "store.db") {
        setenv("ZXREG_BUSY_LIMIT", "200", 1);
        root = openStore(location);
    }
    ~Processes() override { unsetenv("ZXREG_BUSY_LIMIT"); }

    const Folder folder;
    const std::string location;
    Key root;
};

TEST_F(Processes, AChangeIsSeenByTheNextCall) {
    work({location, "create", "A", "set", "A", "v", "one"});
    const Key key = openKey(root, "A");
    EXPECT_EQ(text(key, "v"), "one");
    work({location, "set", "A", "v", "two", "set", "A", "w", "new"});
    EXPECT_EQ(text(key, "v"), "two");
    EXPECT_EQ(values(key), (std::vector<std::string>{"v", "w"}));
    work({location, "unset", "A", "v", "create", "A\\below"});
    EXPECT_EQ(values(key), std::vector<std::string>{"w"});
    EXPECT_EQ(subkeys(key), std::vector<std::string>{"below"});
}

TEST_F(Processes, OurChangesAreSeenByOthers) {
    EXPECT_GE(setText(createKey(root, "A"), "v", "ours"), 0);
    EXPECT_EQ(work({location, "get", "A", "v"}), std::vector<std::string>{"ours"});
    EXPECT_GE(set(openKey(root, "A"), "p", ZXREG_PROTECTED_STRING, std::string("secret\0", 7)), 0);
    EXPECT_EQ(work({location, "get", "A", "p"}), std::vector<std::string>{"secret"});
    work({location, "secret", "A", "p", "other"});
    EXPECT_EQ(text(openKey(root, "A"), "p"), "other");
}

TEST_F(Processes, HandlesOnWhatOthersDeleteAreFlagged) {
    const Key key = createKey(root, "A");
    EXPECT_GE(setText(key, "v", "x"), 0);
    work({location, "delete", "A", "create", "A", "set", "A", "v", "another key"});
    EXPECT_EQ(readCode(key, "v"), ZXREG_E_DELETED);
    EXPECT_EQ(text(openKey(root, "A"), "v"), "another key");
}

TEST_F(Processes, OnlyWhatOthersTouchGetsAnotherStamp) {
    const Key touched = createKey(root, "touched");
    const Key other = createKey(root, "other");
    EXPECT_GE(setText(other, "v", "x"), 0);
    const uint64_t rootBefore = stamp(root);
    const uint64_t touchedBefore = stamp(touched);
    const uint64_t otherBefore = stamp(other);
    work({location, "set", "touched", "v", "x"});
    EXPECT_NE(stamp(touched), touchedBefore);
    EXPECT_NE(stamp(root), rootBefore);
    EXPECT_EQ(stamp(other), otherBefore);
}

TEST_F(Processes, WhoIsFarBehindReadsEverythingAgain) {
    const Key same = createKey(root, "same");
    const Key gone = createKey(root, "gone");
    createKey(root, "A");
    const uint64_t before = stamp(same);
    work({location, "delete", "gone", "fill", "A", "300", "set", "A", "last", "x"});
    EXPECT_EQ(readCode(gone, "v"), ZXREG_E_DELETED);
    EXPECT_EQ(values(openKey(root, "A")).size(), 301u);
    EXPECT_EQ(stamp(same), before);
    EXPECT_GE(setText(same, "v", "still usable"), 0);
    EXPECT_EQ(work({location, "get", "same", "v"}), std::vector<std::string>{"still usable"});
}

TEST_F(Processes, AChangeTooLargeForTheJournalIsReadAsAWhole) {
    const Key key = createKey(root, "A");
    EXPECT_GE(setText(key, "first", "x"), 0);
    work({location, "begin", "fill", "A", "6000", "end"});
    EXPECT_EQ(values(key).size(), 6001u);
    EXPECT_EQ(text(key, "n5999"), "5999");
}

TEST_F(Processes, AnOpenUpdateIsNotSeenAndKeepsOtherWritersOut) {
    createKey(root, "A");
    Worker worker({location, "begin", "set", "A", "v", "theirs", "say", "begun", "wait", "end", "say", "ended"});
    EXPECT_EQ(worker.line(), "begun");
    EXPECT_EQ(readCode(openKey(root, "A"), "v"), ZXREG_E_NOT_FOUND);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(setText(root, "mine", "x"), ZXREG_E_BUSY);
    EXPECT_EQ(begin(root), ZXREG_E_BUSY);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(390));
    EXPECT_NE(std::string(zxreg_lastErrorText()).find("store.db"), std::string::npos);
    EXPECT_EQ(end(root), ZXREG_E_NO_UPDATE);
    worker.goOn();
    EXPECT_EQ(worker.line(), "ended");
    EXPECT_EQ(text(openKey(root, "A"), "v"), "theirs");
    EXPECT_GE(setText(root, "mine", "x"), 0);
    EXPECT_EQ(worker.wait(), 0);
}

TEST_F(Processes, OurOpenUpdateIsNotSeenByOthersUntilItEnds) {
    createKey(root, "A");
    EXPECT_GE(begin(root), 0);
    EXPECT_GE(setText(openKey(root, "A"), "v", "ours"), 0);
    Worker reader({location, "get", "A", "v"});
    EXPECT_EQ(reader.line(), "error 81021804");
    EXPECT_EQ(reader.wait(), 1);
    Worker writer({location, "set", "A", "w", "x"});
    EXPECT_EQ(writer.line(), "error 81021906");
    EXPECT_EQ(writer.wait(), 1);
    EXPECT_GE(end(root), 0);
    EXPECT_EQ(work({location, "get", "A", "v"}), std::vector<std::string>{"ours"});
}

TEST_F(Processes, AWriteIsCheckedAgainstWhatOthersHaveJustCommitted) {
    createKey(root, "A");
    const uint64_t before = stamp(root);
    EXPECT_NE(before, 0u);
    work({location, "create", "A\\below"});
    EXPECT_EQ(deleteKey(root, "A"), ZXREG_E_NOT_EMPTY);
    work({location, "create", "B", "set", "B", "v", "theirs"});
    EXPECT_EQ(text(createKey(root, "B"), "v"), "theirs");
}

TEST_F(Processes, BothWriteInTurn) {
    root.close();
    setenv("ZXREG_BUSY_LIMIT", "5000", 1);
    root = openStore(location);
    createKey(root, "A");
    Worker worker({location, "fill", "A", "200"});
    const Key key = openKey(root, "A");
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(setText(key, "m" + std::to_string(i), std::to_string(i)), ZXREG_S_OK);
    }
    EXPECT_EQ(worker.wait(), 0);
    EXPECT_EQ(values(key).size(), 400u);
    const std::string before = dump(root);
    root.close();
    EXPECT_EQ(values(key).size(), 400u);
    EXPECT_EQ(dump(openStore(location)), before);
}

TEST_F(Processes, WhatWasAcknowledgedSurvivesBeingKilled) {
    createKey(root, "A");
    int last = 0;
    {
        Worker worker({location, "count", "A", "n"});
        for (int i = 0; i < 50; ++i) {
            last = std::atoi(worker.line().c_str());
        }
        worker.kill();
        for (std::string line = worker.line(); !line.empty(); line = worker.line()) {
            last = std::atoi(line.c_str());
        }
        EXPECT_EQ(worker.wait(), -SIGKILL);
    }
    EXPECT_GE(last, 50);
    const int seen = std::atoi(text(openKey(root, "A"), "n").c_str());
    EXPECT_TRUE(seen == last || seen == last + 1) << seen << " after " << last;
    root.close();
    EXPECT_EQ(text(openKey(openStore(location), "A"), "n"), std::to_string(seen));
}

TEST_F(Processes, NothingOfAnUpdateSurvivesBeingKilled) {
    createKey(root, "A");
    const std::string before = dump(root);
    Worker worker({location, "begin", "fill", "A", "500", "create", "B", "delete", "A\\x", "die"});
    EXPECT_EQ(worker.line(), "error 81021804");
    EXPECT_EQ(worker.wait(), -SIGKILL);
    EXPECT_EQ(dump(root), before);
    EXPECT_GE(setText(root, "v", "goes on"), 0);
}

TEST_F(Processes, ReadingWhatHasNotChangedMakesNoSystemCall) {
    EXPECT_GE(setText(createKey(root, "A"), "v", "x"), 0);
    Worker worker({location, "quiet", "A", "v"});
    EXPECT_EQ(worker.line(), "quiet");
}
