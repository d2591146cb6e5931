// The addresses of normal lists in their three orders, and the sizes that enumerating them needs.
#include "support/list_fixture.h"

namespace {

using zxtest::EnumerationOrder;
using zxtest::Handle;
using zxtest::Lines;
using zxtest::operator+;

class OrderOfAList : public zxtest::ListTest {
protected:
    struct Answer {
        int code;
        uint32_t size;
        std::string buffer;
    };
    // Enumerates one address into a buffer of `size` bytes.
    static Answer enumerate(const Handle& list, uint32_t index, uint32_t size) {
        Answer answer{ZXPOL_S_OK, size, std::string(64, '?')};
        zxpol_enumAddress(list.get(), index, answer.buffer.data(), &answer.size, &answer.code);
        return answer;
    }
};
ZXTEST_ON_BOTH_ENGINES(OrderOfAList);

TEST_P(OrderOfAList, IsTheUserOrderByDefault) {
    const Lines all = {"m@x.y", "*@z.z", "A@x.y", "*@a.a", "b@x.y"};
    const Handle list = create("L", all);
    EXPECT_EQ(all, addresses(list));
    EXPECT_EQ(all, addresses(list, "user"));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"m@x.y", "*@a.a"}));
    EXPECT_EQ((Lines{"*@z.z", "A@x.y", "b@x.y"}), addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"m@x.y"}));
    EXPECT_EQ((Lines{"*@z.z", "A@x.y", "b@x.y", "m@x.y"}), addresses(list));
}

TEST_P(OrderOfAList, AnyOtherWordMeansAscendingWildcardsFirst) {
    const Handle list = create("L", {"m@x.y", "*@z.z", "A@x.y", "*@a.a", "b@x.y"});
    for (const char* order : {"", "ascending", "descending", "USER", "user ", "Decending", "decending2", "alpha"})
        EXPECT_EQ((Lines{"*@a.a", "*@z.z", "A@x.y", "b@x.y", "m@x.y"}), addresses(list, order)) << order;
}

TEST_P(OrderOfAList, DescendingLeavesTheLastPlainAddressOut) {
    const Handle list = create("L", {"m@x.y", "*@z.z", "A@x.y", "*@a.a", "b@x.y"});
    EXPECT_EQ((Lines{"*@z.z", "*@a.a", "b@x.y", "A@x.y"}), addresses(list, "decending"));
    const EnumerationOrder descending("decending");
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(list, 4, 64).code);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(list, 5, 64).code);
}

TEST_P(OrderOfAList, WithNoneOneAndTwoEntriesInEachGroup) {
    const Lines wildcards = {"*@b.b", "*@a.a"}, plain = {"n@x.y", "m@x.y"};
    for (size_t w = 0; w <= 2; ++w) {
        for (size_t e = 0; e <= 2; ++e) {
            SCOPED_TRACE(std::to_string(w) + " wildcard entries, " + std::to_string(e) + " plain ones");
            const Lines ws(wildcards.begin(), wildcards.begin() + static_cast<long>(w));
            const Lines es(plain.begin(), plain.begin() + static_cast<long>(e));
            const Handle list = create("L" + std::to_string(w) + std::to_string(e), es + ws);
            EXPECT_EQ(es + ws, addresses(list));
            EXPECT_EQ(Lines(ws.rbegin(), ws.rend()) + Lines(es.rbegin(), es.rend()), addresses(list, "ascending"));
            // Descending is how they were given here, but for the largest of the plain addresses.
            EXPECT_EQ(ws + Lines(es.begin() + (e == 0 ? 0 : 1), es.end()), addresses(list, "decending"));
        }
    }
}

TEST_P(OrderOfAList, IsByLowerCaseAndWithoutQuotes) {
    const Handle list = create("L", {"_a@x.y", "Ba@x.y", "\"ab\"@x.y", "aA@x.y", "~@x.y", "\"Z\".a@x.y", "0@x.y"});
    // In lower case the underscore comes before letters, and so it does here.
    EXPECT_EQ((Lines{"0@x.y", "_a@x.y", "aA@x.y", "\"ab\"@x.y", "Ba@x.y", "\"Z\".a@x.y", "~@x.y"}),
              addresses(list, "ascending"));
}

TEST_P(OrderOfAList, OfTwoThousandAddressesInEachOrder) {
    Lines all, ascending(2000);
    for (size_t at = 0; at < 2000; ++at) {
        const size_t number = at * 777 % 2000 + 1000;
        all.push_back("u" + std::to_string(number) + "@x.example");
        ascending[number - 1000] = all.back();
    }
    const Handle list = create("L", all);
    EXPECT_EQ(all, addresses(list));
    EXPECT_EQ(ascending, addresses(list, "ascending"));
    Lines descending(ascending.rbegin() + 1, ascending.rend());
    EXPECT_EQ(descending, addresses(list, "decending"));
}

TEST_P(OrderOfAList, TheBufferHoldsTheAddressAndItsNul) {
    const Handle list = create("L", {"abc@d.e"});
    Answer answer = enumerate(list, 0, 8);
    EXPECT_CODE(ZXPOL_S_OK, answer.code);
    EXPECT_EQ(8u, answer.size);
    EXPECT_EQ("abc@d.e" + std::string(1, '\0') + std::string(56, '?'), answer.buffer);
    for (const uint32_t size : {7u, 1u, 0u}) {
        answer = enumerate(list, 0, size);
        EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, answer.code);
        EXPECT_EQ(8u, answer.size);
        EXPECT_EQ(std::string(64, '?'), answer.buffer);
    }
}

TEST_P(OrderOfAList, NullBuffersAndSizesAreRefused) {
    const Handle list = create("L", {"a@b.c"});
    char buffer[8];
    uint32_t size = sizeof buffer;
    int error = ZXPOL_S_OK;
    zxpol_enumAddress(list.get(), 0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumAddress(list.get(), 0, buffer, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(OrderOfAList, EndsBehindTheLastAddress) {
    const Handle list = create("L", {"a@b.c"});
    for (const uint32_t index : {1u, 2u, 0x7fffffffu, 0xffffffffu}) {
        EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(list, index, 64).code);
        const EnumerationOrder ascending("ascending");
        EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(list, index, 64).code);
    }
}

TEST_P(OrderOfAList, IsReadFromTheEnvironmentAtEveryCall) {
    const Handle list = create("L", {"b@x.y", "a@x.y"});
    EXPECT_STREQ("b@x.y", enumerate(list, 0, 64).buffer.c_str());
    {
        const EnumerationOrder ascending("ascending");
        EXPECT_STREQ("a@x.y", enumerate(list, 0, 64).buffer.c_str());
    }
    EXPECT_STREQ("b@x.y", enumerate(list, 0, 64).buffer.c_str());
}

}  // namespace
