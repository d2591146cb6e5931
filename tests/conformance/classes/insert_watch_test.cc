// What the watch of a list is told while addresses are inserted and imported.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "addrlist/addr_list_hive.h"
#include "addrlist/normal_addr_list.h"
#include "zxregistry.h"

namespace {

using Fate = ZxPolInsertWatch::Fate;

struct Told {
    size_t place;
    std::string address;
    Fate fate;
    bool operator==(const Told& other) const {
        return place == other.place && address == other.address && fate == other.fate;
    }
};

class WatchRecorder : public ZxPolInsertWatch {
public:
    void onAddress(size_t place, const char* address, Fate fate) override { told.push_back({place, address, fate}); }
    void onFailure(size_t place, int result) override { failures.emplace_back(place, result); }

    std::vector<Told> told;
    std::vector<std::pair<size_t, int>> failures;
};

class InsertWatch : public testing::Test {
protected:
    void SetUp() override {
        int error = 0;
        _store = zxreg_openStore("memory:", &error);
        _hive.reset(ZxPolAddrListHive::open(_store, &error));
        ASSERT_EQ(ZXPOL_S_OK, error);
        _ZxPolAddrListAttr attr = {};
        attr.type = ZXPOL_ADDRLIST_NORMAL;
        _list.reset(_hive->createAddrList("L", &attr, &error));
        ASSERT_EQ(ZXPOL_S_OK, error);
        list().watchInserts(&watch);
    }
    void TearDown() override {
        _list.reset();
        _hive.reset();
        int error = 0;
        zxreg_closeKey(_store, &error);
    }

    ZxPolNormalAddrList& list() { return static_cast<ZxPolNormalAddrList&>(*_list); }

    int import(const std::string& content) {
        const std::string path = testing::TempDir() + "zxpolicy-watch-" + std::to_string(getpid());
        std::ofstream(path, std::ios::binary) << content;
        int error = 0;
        list().importAddresses(0, 0, path.c_str(), &error);
        std::remove(path.c_str());
        return error;
    }

    WatchRecorder watch;

private:
    _ZxPolComHandle* _store = nullptr;
    std::unique_ptr<ZxPolAddrListHive> _hive;
    std::unique_ptr<ZxPolAddrList> _list;
};

TEST_F(InsertWatch, IsToldOfEachAddressByItsIndex) {
    const char* addresses[] = {"a@b.c", "wrong", "A@B.C", nullptr};
    int error = 0;
    list().insertAddresses(addresses, &error);
    EXPECT_EQ(ZXPOL_E_INVALID_FORMAT, error);
    const std::vector<Told> expected = {
        {0, "a@b.c", Fate::stored}, {1, "wrong", Fate::invalid}, {2, "A@B.C", Fate::present}};
    EXPECT_EQ(expected, watch.told);
    EXPECT_TRUE(watch.failures.empty());
}

TEST_F(InsertWatch, IsToldOfTheLinesOfAFile) {
    EXPECT_EQ(ZXPOL_E_INVALID_FORMAT, import("\n\na@b.c\nwrong\n\nd@e.f"));
    const std::vector<Told> expected = {
        {3, "a@b.c", Fate::stored}, {4, "wrong", Fate::invalid}, {6, "d@e.f", Fate::stored}};
    EXPECT_EQ(expected, watch.told);
}

TEST_F(InsertWatch, IsToldOfTheLineThatIsTooLong) {
    EXPECT_EQ(ZXPOL_E_PARSE, import("a@b.c\n" + std::string(600, 'x') + "\n"));
    const std::vector<std::pair<size_t, int>> expected = {{2, ZXPOL_E_PARSE}};
    EXPECT_EQ(expected, watch.failures);
}

}  // namespace
