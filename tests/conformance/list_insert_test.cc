// Inserting into normal lists: what is stored where, byte for byte, and what is passed over.
#include "support/list_fixture.h"

namespace {

using zxtest::DebugMessages;
using zxtest::Handle;
using zxtest::Lines;
using zxtest::sized;

using zxtest::operator+;

class InsertingIntoAList : public zxtest::ListTest {};
ZXTEST_ON_BOTH_ENGINES(InsertingIntoAList);

TEST_P(InsertingIntoAList, ANewListHoldsTypeAndCommonAttributesOnly) {
    const Handle list = create();
    EXPECT_EQ((Lines{"type", "displayName", "comment"}), key().valueNames());
    EXPECT_EQ(0u, key().number("type"));
    EXPECT_EQ("L", key().text("displayName"));
    EXPECT_EQ("", key().text("comment"));
    EXPECT_EQ(Lines{}, addresses(list));
}

TEST_P(InsertingIntoAList, TheFirstAddressBeginsTheFirstValue) {
    const Handle list = create();
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a@b.c"}));
    EXPECT_EQ((Lines{"type", "displayName", "comment", "address1"}), key().valueNames());
    uint32_t type = 0;
    EXPECT_EQ(std::string("a@b.c\0\0", 7), key().bytes("address1", &type));
    EXPECT_EQ(ZXREG_MULTI_STRING, type);
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"d@e.f"}));
    EXPECT_EQ(std::string("a@b.c\0d@e.f\0\0", 13), key().bytes("address1"));
}

TEST_P(InsertingIntoAList, AnImageOfExactly2048BytesStaysInOneValue) {
    // 3 * 512 + 511 bytes, and the NUL that closes the image.
    const Lines full = {sized(511, 'a'), sized(511, 'b'), sized(511, 'c'), sized(510, 'd')};
    const Handle list = create("L", full);
    EXPECT_EQ(imagesOf({full}), images());
    EXPECT_EQ(2048u, key().bytes("address1")->size());
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a@b"}));
    EXPECT_EQ(imagesOf({full, {"a@b"}}), images());
}

TEST_P(InsertingIntoAList, OneByteMoreBeginsTheNextValue) {
    const Lines first = {sized(511, 'a'), sized(511, 'b'), sized(511, 'c')};
    const std::string more = sized(511, 'd');
    create("L", first + Lines{more});
    EXPECT_EQ(imagesOf({first, {more}}), images());
}

TEST_P(InsertingIntoAList, OneCallAndManyCallsPackAlike) {
    Lines all;
    std::vector<Lines> packed(1);
    size_t image = 1;
    for (size_t at = 0; at < 400; ++at) {
        all.push_back(std::to_string(at) + sized(10 + at * 7 % 190, 'p'));
        if (image + all.back().size() + 1 > 2048) {
            packed.emplace_back();
            image = 1;
        }
        packed.back().push_back(all.back());
        image += all.back().size() + 1;
    }
    ASSERT_GT(packed.size(), 15u);
    create("One", all);
    EXPECT_EQ(imagesOf(packed), images("One"));
    const Handle many = create("Many");
    for (const std::string& address : all)
        ASSERT_EQ(ZXPOL_S_OK, insert(many, {address}));
    EXPECT_EQ(imagesOf(packed), images("Many"));
    EXPECT_EQ(all, addresses(many));
}

TEST_P(InsertingIntoAList, OnlyTheLastValueIsFilled) {
    const Lines first = {sized(500, 'a'), sized(500, 'b'), sized(500, 'c'), sized(500, 'd')};
    const Handle list = create("L", first + Lines{sized(500, 'e')});
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {first[1]}));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"z@x.y"}));
    EXPECT_EQ(imagesOf({{first[0], first[2], first[3]}, {sized(500, 'e'), "z@x.y"}}), images());
}

TEST_P(InsertingIntoAList, AnInvalidAddressIsSkippedAndReportedAtTheEnd) {
    const Handle list = create();
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, insert(list, {"a@b.c", "nowhere", "d@e.f"}));
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f"}}), images());
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(list));
    EXPECT_EQ(Lines{"Address 'nowhere' is not valid. Skip!"}, messages.all());
}

TEST_P(InsertingIntoAList, OnlyInvalidAddressesWriteNothing) {
    const Handle list = create();
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, insert(list, {"", "a@", "@b", "jo*@b.c", "a@x.*.c", "a b@c", "a@b@c"}));
    EXPECT_EQ(imagesOf({}), images());
    EXPECT_EQ(7u, messages.all().size());
    EXPECT_EQ("Address '' is not valid. Skip!", messages.all()[0]);
    EXPECT_EQ("Address 'jo*@b.c' is not valid. Skip!", messages.all()[3]);
}

TEST_P(InsertingIntoAList, AnAddressThatIsThereIsPassedOverInAnyLetterCase) {
    const Handle list = create("L", {"Some@Where.org", "*@*.Far.org"});
    const Lines values = key().valueNames();
    const auto before = images();
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"some@WHERE.org", "Some@Where.org", "*@*.FAR.org"}));
    EXPECT_EQ(before, images());
    EXPECT_EQ(values, key().valueNames());
    EXPECT_EQ((Lines{"Address 'some@WHERE.org' already exist", "Address 'Some@Where.org' already exist",
                     "Address '*@*.FAR.org' already exist"}),
              messages.all());
    EXPECT_EQ((Lines{"Some@Where.org", "*@*.Far.org"}), addresses(list));
}

TEST_P(InsertingIntoAList, TheSecondOfTwoInOneCallIsPassedOver) {
    const Handle list = create();
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a@b.c", "A@B.C", "d@e.f"}));
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f"}}), images());
    EXPECT_EQ(1, messages.count("Address 'A@B.C' already exist"));
}

TEST_P(InsertingIntoAList, QuotesAroundWordsMakeNoOtherAddress) {
    const Handle list = create("L", {"\"a.b\".c@d.e"});
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a.b.c@d.e", "a.\"b\".c@d.e"}));
    EXPECT_EQ(imagesOf({{"\"a.b\".c@d.e"}}), images());
    EXPECT_EQ(Lines{"\"a.b\".c@d.e"}, addresses(list));
}

TEST_P(InsertingIntoAList, AllAcceptedFormsGoIn) {
    const Lines forms = {"*",        "*@x.y",        "name@*", "name@*.x.y", "*@*.x.y",
                         "name@[*]", "a@[10.0.0.1]", "*@[*]",  "a..b@c",     "\"a b\"@c"};
    const Handle list = create("L", forms);
    EXPECT_EQ(forms, addresses(list));
    EXPECT_EQ(imagesOf({forms}), images());
    // They match the same addresses, but are two entries.
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"*@*", "*"}));
    EXPECT_EQ(imagesOf({forms + Lines{"*@*"}}), images());
}

TEST_P(InsertingIntoAList, AddressesHave511CharactersAtMost) {
    const Handle list = create();
    const std::string longest = sized(511, 'l'), tooLong = sized(512, 'l');
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, insert(list, {tooLong, longest}));
    EXPECT_EQ(imagesOf({{longest}}), images());
    EXPECT_EQ(Lines{longest}, addresses(list));
    // A message has 511 characters at most.
    EXPECT_EQ(Lines{("Address '" + tooLong).substr(0, 511)}, messages.all());
}

TEST_P(InsertingIntoAList, InvalidAndPresentTogetherAreReportedAsInvalid) {
    const Handle list = create("L", {"a@b.c"});
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, insert(list, {"x", "a@b.c"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a@b.c"}));
}

TEST_P(InsertingIntoAList, AFreshOpenHasTheSameAddressesInTheSameOrder) {
    Lines all;
    for (size_t at = 0; at < 300; ++at)
        all.push_back("u" + std::to_string(at * 7919 % 1000) + "@host.example");
    create("L", all);
    EXPECT_EQ(all, addresses(open()));
    EXPECT_EQ(all, addressesInStore());
}

}  // namespace
