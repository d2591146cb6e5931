// Other processes that change a list.
#include <gtest/gtest.h>

#include "threads/threads_fixture.h"

using threads::Addresses;
using threads::ListClient;
using threads::Worker;

namespace {

constexpr const char* kList = "Partners";

class ListProcesses : public ::testing::Test {
protected:
    ListProcesses() : _store("sqlite"), _list(_store.location(), kList) { _list.create(); }

    Addresses command(const Addresses& words) const {
        Addresses all = {_store.location(), kList};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    void run(const Addresses& words) const { Worker("list_worker", command(words)).finish(); }

    threads::SharedStore _store;
    ListClient _list;
};

TEST_F(ListProcesses, AreSeenByTheNextOpening) {
    run({"insert", "a@example.com", "*@*.example.org"});
    _list.open();
    EXPECT_TRUE(_list.matches("A@example.com"));
    EXPECT_TRUE(_list.matches("anybody@mail.example.org"));
    run({"erase", "a@example.com"});
    _list.open();
    EXPECT_FALSE(_list.matches("a@example.com"));
    EXPECT_EQ(Addresses{"*@*.example.org"}, _list.entries());
}

// An object that was opened before takes part in what has changed when it changes the list itself.
TEST_F(ListProcesses, AreSeenByTheNextChange) {
    _list.insert({"mine1@example.com"});
    run({"insert", "other@example.com"});
    _list.insert({"other@example.com", "mine2@example.com"});
    EXPECT_EQ((Addresses{"mine1@example.com", "other@example.com", "mine2@example.com"}), _list.entries());
    run({"erase", "mine1@example.com"});
    EXPECT_FALSE(_list.erase({"mine1@example.com"}));
    EXPECT_EQ((Addresses{"other@example.com", "mine2@example.com"}), _list.entries());
    threads::expectInStep(_list);
}

TEST_F(ListProcesses, LoseNothingOfEachOther) {
    const std::string count = "150";
    Worker one("list_worker", command({"fill", "one-", count}));
    Worker two("list_worker", command({"fill", "two-", count}));
    for (const std::string& address : threads::numbered("mine-", 150))
        _list.insert({address});
    one.finish();
    two.finish();
    _list.open();
    threads::expectInStep(_list);
    const Addresses entries = _list.entries();
    for (const char* prefix : {"one-", "two-", "mine-"})
        EXPECT_EQ(threads::numbered(prefix, 150), threads::startingWith(prefix, entries));
    EXPECT_EQ(450u, entries.size());
}

// A list that another process replaces again and again is seen as it was before or after, never a part of it.
TEST_F(ListProcesses, ShowAnImportWhole) {
    const Addresses contents[] = {threads::numbered("even-", 3000), threads::numbered("odd-", 1000)};
    const threads::AddressFile files[] = {threads::AddressFile(contents[0]), threads::AddressFile(contents[1])};
    _list.import(files[0].path(), false);
    const char* const rounds = std::getenv("ZX_THREADS_SECONDS") != nullptr ? "600" : "60";
    Worker worker("list_worker", command({"alternate", files[0].path(), files[1].path(), rounds}));
    size_t seen[2] = {0, 0};
    while (worker.isRunning() && !HasFailure()) {
        _list.open();
        const Addresses entries = _list.entries();
        const size_t which = entries.size() == contents[0].size() ? 0 : 1;
        EXPECT_TRUE(entries == contents[which]) << entries.size();
        EXPECT_EQ(which == 0, _list.matches("even-0@example.com"));
        EXPECT_EQ(which == 0, _list.matches("even-2999@example.com"));
        EXPECT_EQ(which == 1, _list.matches("odd-0@example.com"));
        EXPECT_EQ(which == 1, _list.matches("odd-999@example.com"));
        ++seen[which];
    }
    worker.finish();
    EXPECT_GT(seen[0], 0u);
    EXPECT_GT(seen[1], 0u);
}

}  // namespace
