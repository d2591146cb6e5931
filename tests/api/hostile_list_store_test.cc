// Stored lists that no library call would have written: images that are cut, too long or of another type, names with
// gaps or without numbers. What can be read is served, what cannot is reported, and nothing overruns.
#include "support/list_fixture.h"

using namespace zxtest;

namespace {

class HostileListStore : public ListTest {
protected:
    // A list whose values are these bytes under these names, in this order.
    void put(const std::vector<std::pair<std::string, std::string>>& values, uint32_t type = ZXREG_MULTI_STRING) {
        store(std::vector<Lines>());
        for (const auto& [name, bytes] : values)
            key().setBytes(name, type, bytes);
    }
    Lines served() const { return addresses(open()); }
    using Images = std::map<std::string, std::string>;
};
ZXTEST_ON_BOTH_ENGINES(HostileListStore);

TEST_P(HostileListStore, ImagesThatAreCutServeWhatIsThere) {
    using namespace std::string_literals;
    const std::pair<std::string, Lines> images[] = {
        {""s, {}},
        {"\0"s, {}},
        {"\0\0\0"s, {}},
        {"a@b.c"s, {"a@b.c"}},
        {"a@b.c\0"s, {"a@b.c"}},
        {"a@b.c\0d@e"s, {"a@b.c", "d@e"}},
        {"a@b.c\0\0d@e.f\0\0"s, {"a@b.c"}},
        {"\0a@b.c\0\0"s, {}},
    };
    for (const auto& [image, expected] : images) {
        put({{"address1", image}, {"address2", imageOf({"x@y.z"})}});
        EXPECT_EQ((expected + Lines{"x@y.z"}), served()) << image;
        EXPECT_CODE(ZXPOL_S_OK, insert(open(), {"g@h.i"}));
        EXPECT_EQ((expected + Lines{"x@y.z", "g@h.i"}), served()) << image;
        EXPECT_CODE(ZXPOL_S_OK, remove(open(), {"x@y.z", "g@h.i"}));
        EXPECT_EQ(expected, served()) << image;
        deleteList();
    }
}

TEST_P(HostileListStore, AnImageWithoutAnEndIsOneAddressAndNoOverrun) {
    put({{"address1", std::string(2048, 'x')}, {"address2", imageOf({"a@b.c"})}});
    EXPECT_EQ(Lines{"a@b.c"}, served());
    EXPECT_FALSE(holds(std::string(2048, 'x')));
    EXPECT_CODE(ZXPOL_S_OK, insert(open(), {"d@e.f"}));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), served());
}

TEST_P(HostileListStore, AnImageOver2048BytesKeepsTheListClosed) {
    put({{"address1", imageOf({"a@b.c"})}});
    key().setBytes("address2", ZXREG_MULTI_STRING, imageOf({sized(1023, 'a'), sized(1023, 'b')}));
    ASSERT_EQ(2049u, key().bytes("address2")->size());
    EXPECT_EQ(6u, reasonOf(codeOfOpening()));
    EXPECT_FALSE(holds("a@b.c"));
    key().setBytes("address2", ZXREG_MULTI_STRING, imageOf({sized(511, 'a'), sized(511, 'b')}));
    EXPECT_EQ((Lines{"a@b.c", sized(511, 'a'), sized(511, 'b')}), served());
    EXPECT_TRUE(holds("a@b.c"));
}

TEST_P(HostileListStore, AValueOfAnotherTypeKeepsTheListClosed) {
    for (const uint32_t type : {ZXREG_STRING, ZXREG_PROTECTED_STRING, ZXREG_NUMBER}) {
        put({{"address1", std::string("a@b", 4)}}, type);
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, codeOfOpening()) << type;
        EXPECT_FALSE(holds("a@b")) << type;
        deleteList();
    }
}

TEST_P(HostileListStore, AListThatGoesBadWhileItIsOpenIsNotWritten) {
    const Handle list = create("L", {"a@b.c"});
    key().setText("address1", "d@e.f");
    EXPECT_TRUE(ZX_FAILURE(insert(list, {"g@h.i"})));
    EXPECT_TRUE(ZX_FAILURE(remove(list, {"a@b.c"})));
    EXPECT_EQ("d@e.f", key().text("address1"));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, codeOfOpening());
    EXPECT_FALSE(holds("a@b.c"));
}

TEST_P(HostileListStore, ValuesAreReadInTheOrderOfTheirNumbers) {
    put({{"address10", imageOf({"j@x"})},
         {"address2", imageOf({"b@x"})},
         {"ADDRESS1", imageOf({"a@x"})},
         {"address", imageOf({"0@x"})},
         {"addressx", imageOf({"x@x"})},
         {"address 3", imageOf({"y@x"})},
         {"address-4", imageOf({"z@x"})},
         {"Address3", imageOf({"c@x"})}});
    EXPECT_EQ((Lines{"0@x", "a@x", "b@x", "c@x", "j@x"}), served());
    EXPECT_FALSE(holds("x@x"));
    EXPECT_CODE(ZXPOL_S_OK, insert(open(), {"k@x"}));
    EXPECT_EQ(imageOf({"j@x", "k@x"}), key().bytes("address10"));
}

TEST_P(HostileListStore, ANumberOfZeroIsReadAndRemovedFrom) {
    put({{"address0", imageOf({"a@b.c", "d@e.f"})}});
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), served());
    EXPECT_CODE(ZXPOL_S_OK, insert(open(), {"g@h.i"}));
    EXPECT_EQ((Images{{"address0", imageOf({"a@b.c", "d@e.f", "g@h.i"})}}), images());
    EXPECT_CODE(ZXPOL_S_OK, remove(open(), {"a@b.c", "g@h.i"}));
    EXPECT_EQ((Images{{"address0", imageOf({"d@e.f"})}}), images());
    EXPECT_EQ(Lines{"d@e.f"}, served());
}

TEST_P(HostileListStore, ANameInCapitalsIsTheSameValue) {
    put({{"ADDRESS1", imageOf({"a@b.c"})}});
    EXPECT_CODE(ZXPOL_S_OK, insert(open(), {"d@e.f"}));
    EXPECT_EQ(imageOf({"a@b.c", "d@e.f"}), key().bytes("ADDRESS1"));
    EXPECT_EQ(std::nullopt, key().bytes("address1"));
    EXPECT_CODE(ZXPOL_S_OK, remove(open(), {"a@b.c", "d@e.f"}));
    EXPECT_EQ(Lines{}, served());
}

TEST_P(HostileListStore, GapsAreNotFilledAndLoseNothing) {
    put({{"address1", imageOf({"a@b.c"})}, {"address3", imageOf({"d@e.f"})}});
    const Handle list = open();
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"g@h.i"}));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "g@h.i"}), addresses(list));
    EXPECT_EQ((Images{{"address1", imageOf({"a@b.c"})}, {"address3", imageOf({"d@e.f", "g@h.i"})}}), images());
}

TEST_P(HostileListStore, AValueThatWouldGrowPast2048BytesForAGapIsNotWritten) {
    const Lines full = {sized(511, 'a'), sized(511, 'b'), sized(511, 'c'), sized(500, 'd')};
    put({{"address1", imageOf({"a@b.c"})}, {"address3", imageOf(full)}});
    const Images before = images();
    const Handle list = open();
    // The next name is that of the third value, which is full.
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, insert(list, {sized(100, 'n')}));
    EXPECT_EQ(before, images());
    EXPECT_EQ((Lines{"a@b.c"} + full), addresses(list));
    EXPECT_EQ((Lines{"a@b.c"} + full), served());
}

TEST_P(HostileListStore, RemovingAcrossAGapLosesNothingElse) {
    put({{"address1", imageOf({"a@b.c", "d@e.f"})}, {"address3", imageOf({"g@h.i"})}});
    const Handle list = open();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"a@b.c"}));
    EXPECT_EQ((Lines{"d@e.f", "g@h.i"}), addresses(list));
    EXPECT_EQ((Lines{"d@e.f", "g@h.i"}), addressesInStore());
    EXPECT_EQ(imageOf({"d@e.f", "g@h.i"}), key().bytes("address1"));
}

TEST_P(HostileListStore, AnAddressStoredTwiceIsServedOnce) {
    put({{"address1", imageOf({"a@b.c", "A@b.c", "d@e.f"})}, {"address2", imageOf({"a@B.c"})}});
    const Handle list = open();
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(list));
    EXPECT_TRUE(holds("a@b.c"));
}

TEST_P(HostileListStore, EntriesThatNoInsertAcceptsAreServed) {
    put({{"address1", imageOf({"no address", "jo*@b.c", "x@m.*.y", "@", "*"})}});
    const Handle list = open();
    EXPECT_EQ((Lines{"no address", "jo*@b.c", "x@m.*.y", "@", "*"}), addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"*", "no address"}));
    EXPECT_TRUE(holds("joe@b.c"));
    EXPECT_TRUE(holds("x@m.any.y"));
    EXPECT_FALSE(holds("jim@b.c"));
    EXPECT_FALSE(holds("no address"));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"jo*@b.c", "@", "x@m.*.y"}));
    EXPECT_EQ(Images{}, images());
}

TEST_P(HostileListStore, AListWithoutAKindOrOfAnUnknownOneDoesNotOpen) {
    put({{"address1", imageOf({"a@b.c"})}});
    key().setNumber("type", 2);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, codeOfOpening());
    key().setText("type", "0");
    EXPECT_TRUE(ZX_FAILURE(codeOfOpening()));
    key().removeValue("type");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, codeOfOpening());
    EXPECT_FALSE(holds("a@b.c"));
}

}  // namespace
