// ZxPolAddrSubList: the addresses of one stored value.
#include "addrlist/addr_sub_list.h"

#include "support/list_fixture.h"

namespace {

using zxtest::imageOf;
using zxtest::Lines;
using zxtest::sized;

class AddressSubList : public zxtest::StoreTest {
protected:
    void set(const std::string& image, uint32_t type = ZXREG_MULTI_STRING) { raw().setBytes("address1", type, image); }
    std::string image() const { return raw().bytes("address1").value_or("none"); }

    // A sub-list and the code of loading it.
    struct Loaded {
        explicit Loaded(_ZxPolComHandle* key, const char* name = "address1") : subList(key, name, &code) {}
        int code = ZXPOL_S_OK;
        ZxPolAddrSubList subList;

        Lines all() const {
            Lines found;
            for (uint32_t index = 0;; ++index) {
                char buffer[2200];
                uint32_t size = sizeof buffer;
                int error = ZXPOL_S_OK;
                subList.enumerate(index, buffer, &size, &error);
                if (error < 0) {
                    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                    return found;
                }
                found.emplace_back(buffer);
                EXPECT_EQ(found.back().size() + 1, size);
            }
        }
        int insert(const std::string& address) {
            int error = ZXPOL_E_PARSE;
            subList.insert(address.c_str(), &error);
            return error;
        }
        int remove(const char* address, int position = ZxPolAddrSubList::anyPosition) {
            int error = ZXPOL_E_PARSE;
            subList.remove(address, &error, position);
            return error;
        }
        int positionOf(const char* address) const {
            int position = 4711;
            const bool isThere = subList.match(address, position);
            return isThere ? position : -1 - position;
        }
    };
    int flush(const Loaded& loaded, int error = ZXPOL_S_OK) const {
        loaded.subList.flush(raw().handle(), &error);
        return error;
    }
};
ZXTEST_ON_BOTH_ENGINES(AddressSubList);

TEST_P(AddressSubList, OfAValueThatDoesNotExistIsEmpty) {
    const Loaded loaded(store());
    EXPECT_CODE(ZXPOL_S_OK, loaded.code);
    EXPECT_EQ(Lines{}, loaded.all());
    EXPECT_EQ(1u, loaded.subList.multiStrLen());
}

TEST_P(AddressSubList, HoldsTheTextsOfItsValueInOrder) {
    set(imageOf({"b@c.d", "A@c.d", "*@e.f"}));
    const Loaded loaded(store());
    EXPECT_CODE(ZXPOL_S_OK, loaded.code);
    EXPECT_EQ((Lines{"b@c.d", "A@c.d", "*@e.f"}), loaded.all());
    EXPECT_EQ(19u, loaded.subList.multiStrLen());
}

TEST_P(AddressSubList, EndsAtTheFirstEmptyText) {
    set(std::string("\0a@b.c\0\0", 8));
    EXPECT_EQ(Lines{}, Loaded(store()).all());
    set(std::string("a@b.c\0\0d@e.f\0\0", 14));
    EXPECT_EQ(Lines{"a@b.c"}, Loaded(store()).all());
    EXPECT_EQ(7u, Loaded(store()).subList.multiStrLen());
    set("");
    EXPECT_EQ(Lines{}, Loaded(store()).all());
}

TEST_P(AddressSubList, OfAnImageThatIsCutHoldsWhatIsThere) {
    set(std::string("a@b.c\0d@e.f", 11));
    const Loaded cut(store());
    EXPECT_CODE(ZXPOL_S_OK, cut.code);
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), cut.all());
    set(std::string(2048, 'x'));
    const Loaded endless(store());
    EXPECT_CODE(ZXPOL_S_OK, endless.code);
    EXPECT_EQ(Lines{std::string(2048, 'x')}, endless.all());
}

TEST_P(AddressSubList, OfAnotherValueReportsIt) {
    set(imageOf(Lines(700, "ab")));
    const Loaded tooLong(store());
    EXPECT_EQ(6u, zxtest::reasonOf(tooLong.code));
    EXPECT_EQ(Lines{}, tooLong.all());
    for (const uint32_t type : {ZXREG_STRING, ZXREG_PROTECTED_STRING}) {
        set("a@b.c" + std::string(2, '\0'), type);
        const Loaded other(store());
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, other.code);
        EXPECT_EQ(Lines{}, other.all());
    }
    set(std::string(4, 'a'), ZXREG_NUMBER);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, Loaded(store()).code);
}

TEST_P(AddressSubList, MatchesInAnyLetterCaseAndTellsThePosition) {
    set(imageOf({"a@b.c", "D@e.f"}));
    Loaded loaded(store());
    EXPECT_CODE(ZXPOL_S_OK, loaded.insert("g@h.i"));
    EXPECT_EQ(0, loaded.positionOf("A@B.C"));
    EXPECT_EQ(1, loaded.positionOf("d@E.f"));
    EXPECT_EQ(2, loaded.positionOf("G@H.I"));
    // Not there: the position is behind the last.
    for (const char* absent : {"a@b", "a@b.cd", "", "x@y.z", "\"a\"@b.c"})
        EXPECT_EQ(-1 - 3, loaded.positionOf(absent)) << absent;
}

TEST_P(AddressSubList, AddsBehindWhatWasLoaded) {
    set(imageOf({"z@z.z"}));
    Loaded loaded(store());
    EXPECT_CODE(ZXPOL_S_OK, loaded.insert("b@b.b"));
    EXPECT_CODE(ZXPOL_S_OK, loaded.insert("a@a.a"));
    EXPECT_CODE(ZXPOL_S_OK, loaded.insert("b@b.b"));
    EXPECT_EQ((Lines{"z@z.z", "b@b.b", "a@a.a", "b@b.b"}), loaded.all());
    EXPECT_EQ(25u, loaded.subList.multiStrLen());
    EXPECT_EQ(imageOf({"z@z.z"}), image());
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
    EXPECT_EQ(imageOf({"z@z.z", "b@b.b", "a@a.a", "b@b.b"}), image());
}

TEST_P(AddressSubList, RemovesTheFirstThatEqualsTheAddress) {
    set(imageOf({"a@b.c", "d@e.f"}));
    Loaded loaded(store());
    loaded.insert("D@E.F");
    EXPECT_CODE(ZXPOL_S_OK, loaded.remove("d@E.f"));
    EXPECT_EQ((Lines{"a@b.c", "D@E.F"}), loaded.all());
    EXPECT_CODE(ZXPOL_S_OK, loaded.remove("d@E.f"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, loaded.remove("d@E.f"));
    EXPECT_EQ(Lines{"a@b.c"}, loaded.all());
}

TEST_P(AddressSubList, RemovesAtAPositionWhateverTheAddress) {
    set(imageOf({"a@b.c", "d@e.f"}));
    Loaded loaded(store());
    loaded.insert("g@h.i");
    loaded.insert("j@k.l");
    EXPECT_CODE(ZXPOL_S_OK, loaded.remove("j@k.l", 0));
    EXPECT_CODE(ZXPOL_S_OK, loaded.remove(nullptr, 1));
    EXPECT_EQ((Lines{"d@e.f", "j@k.l"}), loaded.all());
    for (const int position : {2, 100, -2})
        EXPECT_CODE(ZXPOL_E_NOT_FOUND, loaded.remove("d@e.f", position)) << position;
    EXPECT_EQ(13u, loaded.subList.multiStrLen());
}

TEST_P(AddressSubList, IsWrittenOnlyWhenItWasChanged) {
    set(imageOf({"a@b.c"}));
    Loaded loaded(store());
    loaded.remove("x@y.z");
    set(imageOf({"other"}));
    EXPECT_CODE(ZXPOL_E_PARSE, flush(loaded, ZXPOL_E_PARSE));
    EXPECT_EQ(imageOf({"other"}), image());
    loaded.insert("d@e.f");
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded, ZXPOL_E_PARSE));
    EXPECT_EQ(imageOf({"a@b.c", "d@e.f"}), image());
    // Once changed, it is written each time.
    set(imageOf({"other"}));
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
    EXPECT_EQ(imageOf({"a@b.c", "d@e.f"}), image());
}

TEST_P(AddressSubList, EmptiedIsASingleNul) {
    set(imageOf({"a@b.c"}));
    Loaded loaded(store());
    EXPECT_CODE(ZXPOL_S_OK, loaded.remove("a@b.c"));
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
    EXPECT_EQ(std::string(1, '\0'), image());
    EXPECT_EQ(1u, loaded.subList.multiStrLen());
}

TEST_P(AddressSubList, Of2048BytesIsWrittenAndOfMoreIsNot) {
    set(imageOf({"old"}));
    Loaded loaded(store());
    loaded.remove("old");
    Lines all;
    for (const char letter : {'a', 'b', 'c'}) {
        all.push_back(sized(511, letter));
        loaded.insert(all.back());
    }
    all.push_back(sized(510, 'd'));
    loaded.insert(all.back());
    EXPECT_EQ(2048u, loaded.subList.multiStrLen());
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
    EXPECT_EQ(imageOf(all), image());
    loaded.insert("e");
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, flush(loaded));
    EXPECT_EQ(imageOf(all), image());
    loaded.remove("e");
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
}

TEST_P(AddressSubList, MixedRemovalsAndInsertionsKeepTheOrder) {
    set(imageOf({"1@x", "2@x", "3@x"}));
    Loaded loaded(store());
    loaded.insert("4@x");
    loaded.remove("2@x");
    loaded.insert("5@x");
    loaded.remove("4@x");
    loaded.insert("2@x");
    loaded.remove(nullptr, 0);
    loaded.insert("6@x");
    EXPECT_EQ((Lines{"3@x", "5@x", "2@x", "6@x"}), loaded.all());
    EXPECT_EQ(17u, loaded.subList.multiStrLen());
    EXPECT_CODE(ZXPOL_S_OK, flush(loaded));
    EXPECT_EQ(imageOf({"3@x", "5@x", "2@x", "6@x"}), image());
    EXPECT_EQ((Lines{"3@x", "5@x", "2@x", "6@x"}), Loaded(store()).all());
}

TEST_P(AddressSubList, EnumeratesIntoBuffersThatAreLargeEnough) {
    set(imageOf({"abc@d"}));
    const Loaded loaded(store());
    char buffer[8] = "???????";
    uint32_t size = 6;
    int error = ZXPOL_E_PARSE;
    loaded.subList.enumerate(0, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(6u, size);
    EXPECT_STREQ("abc@d", buffer);
    EXPECT_EQ('?', buffer[6]);
    std::memset(buffer, '?', sizeof buffer);
    size = 5;
    loaded.subList.enumerate(0, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(6u, size);
    EXPECT_EQ(std::string(8, '?'), std::string(buffer, 8));
}

TEST_P(AddressSubList, RefusesToEnumerateIntoNothing) {
    set(imageOf({"abc@d"}));
    const Loaded loaded(store());
    char buffer[8];
    uint32_t size = 8, none = 0;
    for (const uint32_t index : {0u, 9u}) {
        int error = ZXPOL_S_OK;
        loaded.subList.enumerate(index, nullptr, &size, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        loaded.subList.enumerate(index, buffer, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        loaded.subList.enumerate(index, buffer, &none, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    int error = ZXPOL_S_OK;
    loaded.subList.enumerate(1, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
}

}  // namespace
