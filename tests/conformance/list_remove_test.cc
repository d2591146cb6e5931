// Removing from normal lists: what goes, what moves forward and which values vanish, byte for byte.
#include "support/list_fixture.h"

namespace {

using zxtest::DebugMessages;
using zxtest::Handle;
using zxtest::imageOf;
using zxtest::Lines;
using zxtest::sized;
using zxtest::operator+;

// Addresses that take `bytes` bytes each with their NUL, told apart by their last digit.
Lines several(size_t count, size_t bytes, char letter) {
    Lines made;
    for (size_t at = 1; at <= count; ++at)
        made.push_back(sized(bytes - 2, letter) + std::to_string(at));
    return made;
}

class RemovingFromAList : public zxtest::ListTest {
protected:
    // Four values, of 2001, 2001, 1801 and 901 bytes.
    const Lines a = several(4, 500, 'a'), b = several(5, 400, 'b'), c = several(6, 300, 'c'), d = several(2, 450, 'd');

    Handle createFourValues() {
        Handle list = create("L", a + b + c + d);
        EXPECT_EQ(imagesOf({a, b, c, d}), images());
        return list;
    }
};
ZXTEST_ON_BOTH_ENGINES(RemovingFromAList);

TEST_P(RemovingFromAList, TheAddressLeavesItsValue) {
    const Handle list = create("L", {"a@b.c", "*@d.e", "f@g.h"});
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"*@d.e"}));
    EXPECT_EQ(imagesOf({{"a@b.c", "f@g.h"}}), images());
    EXPECT_EQ((Lines{"a@b.c", "f@g.h"}), addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"A@B.C"}));
    EXPECT_EQ(imagesOf({{"f@g.h"}}), images());
    EXPECT_EQ(Lines{"f@g.h"}, addresses(list));
}

TEST_P(RemovingFromAList, TheLastAddressTakesItsValueAlong) {
    const Handle list = create("L", {"a@b.c"});
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"a@b.c"}));
    EXPECT_EQ((Lines{"type", "displayName", "comment"}), key().valueNames());
    EXPECT_EQ(Lines{}, addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"a@b.c"}));
    EXPECT_EQ(imagesOf({{"a@b.c"}}), images());
}

TEST_P(RemovingFromAList, AnAbsentAddressIsReportedAndTheOthersGo) {
    const Handle list = create("L", {"a@b.c", "d@e.f", "g@h.i"});
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c", "x@y.z", "*@h.i", "g@h.i"}));
    EXPECT_EQ(imagesOf({{"d@e.f"}}), images());
    EXPECT_EQ((Lines{"Address 'x@y.z' doesn't exist", "Address '*@h.i' doesn't exist"}), messages.all());
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c"}));
    EXPECT_EQ(Lines{"d@e.f"}, addresses(list));
}

TEST_P(RemovingFromAList, TheSecondOfTwoInOneCallIsAbsent) {
    const Handle list = create("L", {"a@b.c", "d@e.f"});
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c", "A@b.c"}));
    EXPECT_EQ(imagesOf({{"d@e.f"}}), images());
}

TEST_P(RemovingFromAList, FromAnEmptyListNothingIsFound) {
    const Handle list = create();
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c"}));
    EXPECT_EQ(imagesOf({}), images());
}

TEST_P(RemovingFromAList, QuotesCountHere) {
    const Handle list = create("L", {"\"a\"@b.c", "d@e.f"});
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c"}));
    EXPECT_EQ(imagesOf({{"\"a\"@b.c", "d@e.f"}}), images());
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"\"A\"@b.c"}));
    EXPECT_EQ(Lines{"d@e.f"}, addresses(list));
}

TEST_P(RemovingFromAList, AValueOf1364BytesIsNotFilledUp) {
    const Lines kept = {sized(511, 'a'), sized(511, 'b'), sized(338, 'c')};
    const Lines next = {sized(200, 'e')};
    const Handle list = create("L", kept + Lines{sized(511, 'd')} + next);
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {sized(511, 'd')}));
    EXPECT_EQ(1364u, key().bytes("address1")->size());
    EXPECT_EQ(imagesOf({kept, next}), images());
}

TEST_P(RemovingFromAList, AValueOf1363BytesIs) {
    const Lines kept = {sized(511, 'a'), sized(511, 'b'), sized(337, 'c')};
    const Lines next = {sized(200, 'e')};
    const Handle list = create("L", kept + Lines{sized(511, 'd')} + next);
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {sized(511, 'd')}));
    EXPECT_EQ(imagesOf({kept + next}), images());
    EXPECT_EQ(kept + next, addresses(list));
}

TEST_P(RemovingFromAList, FillingUpReaches2048BytesAndNoMore) {
    // 1201 bytes stay in the first value: 847 more fit.
    const Lines first = several(4, 400, 'a');
    for (const size_t bytes : {447u, 448u}) {
        const std::string name = std::to_string(bytes);
        const Lines second = {sized(399, 'e'), sized(bytes - 1, 'f'), sized(99, 'g')};
        const Handle list = create(name, first + Lines{sized(399, 'z')} + second);
        EXPECT_CODE(ZXPOL_S_OK, remove(list, {first[3]}));
        EXPECT_CODE(ZXPOL_S_OK, remove(list, {sized(399, 'z')}));
        const Lines kept(first.begin(), first.end() - 1);
        const std::vector<Lines> fits = {kept + Lines{second[0], second[1]}, {second[2]}};
        const std::vector<Lines> doesNot = {kept + Lines{second[0]}, {second[1], second[2]}};
        EXPECT_EQ(imagesOf(bytes == 447 ? fits : doesNot), images(name));
    }
}

TEST_P(RemovingFromAList, FromTheMiddlePullsLaterAddressesForward) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {b[1]}));
    EXPECT_EQ(imagesOf({a, {b[0], b[2], b[3], b[4]}, c, d}), images());
    // 1201 bytes stay in the second value, 847 more fit; of the third 1201 bytes stay, too.
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {b[2]}));
    EXPECT_EQ(imagesOf({a, {b[0], b[3], b[4], c[0], c[1]}, {c[2], c[3], c[4], c[5], d[0]}, {d[1]}}), images());
    EXPECT_EQ((a + Lines{b[0], b[3], b[4]} + c + d), addresses(list));
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, FromTheFrontAllValuesFollow) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {a[1], a[2]}));
    const std::vector<Lines> values = {
        {a[0], a[3], b[0], b[1]}, {b[2], b[3], b[4], c[0], c[1]}, {c[2], c[3], c[4], c[5], d[0]}, {d[1]}};
    EXPECT_EQ(imagesOf(values), images());
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, ValuesThatGetEmptyVanish) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, Lines{d[0]} + a + Lines{b[0], b[1], b[2], b[3]} + Lines{d[1], c[5]}));
    // Nothing is left of the first and the last value, one address of the second, five of the third: all in one.
    EXPECT_EQ(imagesOf({{b[4], c[0], c[1], c[2], c[3], c[4]}}), images());
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, AnEmptiedValueIsFilledFromTheOnesBehindIt) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, a + Lines{b[0], b[1], b[2], b[3]}));
    EXPECT_EQ(imagesOf({{b[4], c[0], c[1], c[2], c[3], c[4]}, {c[5], d[0], d[1]}}), images());
    EXPECT_EQ((Lines{b[4]} + c + d), addresses(list));
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, FillingUpBeginsAtTheLowestSparseValue) {
    const Handle list = createFourValues();
    // The third value gets sparse first, then the second; the first does not.
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {c[0], c[1], b[0], b[1], a[0]}));
    // The second keeps 1201 bytes and takes two of 300, the third, of 601, takes 450 twice.
    EXPECT_EQ(imagesOf({{a[1], a[2], a[3]}, {b[2], b[3], b[4], c[2], c[3]}, {c[4], c[5], d[0], d[1]}}), images());
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, ASparseLastValueStaysWhatItIs) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {d[0]}));
    EXPECT_EQ(imagesOf({a, b, c, {d[1]}}), images());
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {d[1]}));
    EXPECT_EQ(imagesOf({a, b, c}), images());
}

TEST_P(RemovingFromAList, SparseValuesThatNoRemovalTouchedAreNotFilledUp) {
    store({a, {d[0]}, c, {d[1]}}, "Sparse");
    const Handle sparse = open("Sparse");
    EXPECT_CODE(ZXPOL_S_OK, remove(sparse, {a[3]}));
    EXPECT_EQ(imagesOf({{a[0], a[1], a[2]}, {d[0]}, c, {d[1]}}), images("Sparse"));
}

TEST_P(RemovingFromAList, EmptyValuesAnywhereVanishWithTheNextFillingUp) {
    store({{}, a, {}, {d[0], d[1]}, {}});
    const Handle list = open();
    EXPECT_EQ(a + d, addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {d[0]}));
    EXPECT_EQ(imagesOf({a, {d[1]}}), images());
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, EverythingInOneCall) {
    const Handle list = createFourValues();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, d + b + a + c));
    EXPECT_EQ(imagesOf({}), images());
    EXPECT_EQ(Lines{}, addresses(list));
}

TEST_P(RemovingFromAList, MoreThanNineValuesKeepTheirNumbersInOrder) {
    std::vector<Lines> values;
    Lines all;
    for (char letter = 'a'; letter <= 'l'; ++letter) {
        values.push_back(several(4, 500, letter));
        all = all + values.back();
    }
    const Handle list = create("L", all);
    EXPECT_EQ(imagesOf(values), images());
    EXPECT_CODE(ZXPOL_S_OK, remove(list, values[1] + values[9]));
    values.erase(values.begin() + 9);
    values.erase(values.begin() + 1);
    EXPECT_EQ(imagesOf(values), images());
    EXPECT_EQ(addresses(list), addressesInStore());
}

TEST_P(RemovingFromAList, AnAddressTooLongToBeReadEndsTheFillingUpWithoutALoss) {
    const Lines kept = {sized(511, 'a'), sized(511, 'b'), sized(337, 'c')};
    const Lines next = {sized(199, 'e'), sized(600, 'x'), "f@g.h"};
    store({kept + Lines{sized(511, 'd')}, next});
    const Handle list = open();
    // What stands behind it in its value is not served.
    EXPECT_EQ((kept + Lines{sized(511, 'd'), next[0]}), addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {sized(511, 'd')}));
    EXPECT_EQ(imagesOf({kept + Lines{next[0]}, {next[1], next[2]}}), images());
}

TEST_P(RemovingFromAList, AnAddressThatIsStoredButNotServedEndsTheCall) {
    store({{"a@b.c", sized(600, 'x'), "f@g.h"}, {"i@j.k"}});
    const Handle list = open();
    EXPECT_EQ((Lines{"a@b.c", "i@j.k"}), addresses(list));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"f@g.h", "a@b.c"}));
    EXPECT_EQ(imagesOf({{"a@b.c", sized(600, 'x')}, {"i@j.k"}}), images());
    EXPECT_EQ((Lines{"a@b.c", "i@j.k"}), addresses(list));
}

}  // namespace
