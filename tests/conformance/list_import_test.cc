// Importing address files into normal lists: which lines are addresses, and what is reported.
#include "support/list_fixture.h"

namespace {

using zxtest::DebugMessages;
using zxtest::Lines;
using zxtest::sized;
using zxtest::TestFile;
using zxtest::operator+;

constexpr uint32_t plain = 0, directory = 1;

class ImportingAddresses : public zxtest::ImportTest {};
ZXTEST_ON_BOTH_ENGINES(ImportingAddresses);

TEST_P(ImportingAddresses, AddsToTheListOrTakesItsPlace) {
    const TestFile file("a@b.c\nd@e.f\nold@B.C\n");
    EXPECT_CODE(ZXPOL_S_OK, import(list(), file.path()));
    EXPECT_EQ((Lines{"old@b.c", "a@b.c", "d@e.f"}), now());
    EXPECT_CODE(ZXPOL_S_OK, import(list(), file.path(), plain, 1));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "old@B.C"}), now());
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f", "old@B.C"}}), images());
}

TEST_P(ImportingAddresses, ReplacingDeletesAllValues) {
    Lines many;
    for (char letter = 'a'; letter <= 'z'; ++letter)
        many.push_back(sized(500, letter));
    EXPECT_CODE(ZXPOL_S_OK, insert(list(), many));
    ASSERT_EQ(7u, images().size());
    EXPECT_CODE(ZXPOL_S_OK, importing("a@b.c\n"));
    EXPECT_EQ(imagesOf({{"a@b.c"}}), images());
    EXPECT_EQ("L", key().text("displayName"));
}

TEST_P(ImportingAddresses, AFileWithoutAddressesIsReportedAndChangesNothing) {
    for (const char* content : {"", "\n", "\n\n \t\r\n", " ", "\t", "\r", "\r\n\r\n"}) {
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing(content)) << content;
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing(content, directory)) << content;
        EXPECT_EQ(Lines{"old@b.c"}, now());
    }
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("cn: a@b.c\nmail:\nmail : \n", directory));
    EXPECT_EQ(Lines{"old@b.c"}, now());
}

TEST_P(ImportingAddresses, LineEndsAndBlanksAroundAnAddressVanish) {
    EXPECT_CODE(ZXPOL_S_OK, importing("a@b.c\r\nd@e.f \t \r\n \t g@h.i\n\n\r\n  \nj@k.l\t\t\n\tm@n.o \n\"p q\"@r  "));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "g@h.i", "j@k.l", "m@n.o", "\"p q\"@r"}), now());
}

TEST_P(ImportingAddresses, TheLastLineNeedsNoLineEnd) {
    EXPECT_CODE(ZXPOL_S_OK, importing("a@b.c\nd@e.f"));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), now());
}

TEST_P(ImportingAddresses, ACarriageReturnAloneEndsNoLineAndIsNoBlankBehindAnAddress) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("a@b.c\rd@e.f\r"));
    EXPECT_EQ(Lines{}, now());
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("a@b.c\r\r\nd@e.f\r \ng@h.i\n"));
    EXPECT_EQ(Lines{"g@h.i"}, now());
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("a@b.c\nd@e.f\r"));
    EXPECT_EQ(Lines{"a@b.c"}, now());
}

TEST_P(ImportingAddresses, InvalidLinesAreSkippedLoggedAndReported) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("a@b.c\nnot an address\nd@e.f\n# g@h.i\n*@j.k\n"));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "*@j.k"}), now());
    EXPECT_EQ((Lines{"Address 'not an address' is not valid. Skip!", "Address '# g@h.i' is not valid. Skip!"}),
              messages.all());
}

TEST_P(ImportingAddresses, InvalidLinesAloneStillTakeTheOldAddressesAway) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("nowhere\n"));
    EXPECT_EQ(Lines{}, now());
    EXPECT_EQ(imagesOf({}), images());
}

TEST_P(ImportingAddresses, AddressesThatAreThereAreNoFailure) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_S_OK, import(list(), TestFile("OLD@b.c\na@b.c\na@b.c\n").path()));
    EXPECT_EQ((Lines{"old@b.c", "a@b.c"}), now());
    EXPECT_EQ((Lines{"Address 'OLD@b.c' already exist", "Address 'a@b.c' already exist"}), messages.all());
}

// ---- directory exports ------------------------------------------------------------------------------------

TEST_P(ImportingAddresses, DirectoryLinesOfTwoAttributesCarryAddresses) {
    EXPECT_CODE(ZXPOL_S_OK, importing("dn: cn=someone,dc=x\n"
                                      "mail: a@b.c\n"
                                      "MAIL:d@e.f\n"
                                      "Rfc822MailBox: g@h.i\r\n"
                                      "  mail :: \t j@k.l  \n"
                                      "mail\tm@n.o\n"
                                      "mail p@q.r\n"
                                      "cn: s@t.u\n"
                                      "mailing: s@t.u\n"
                                      "email: s@t.u\n"
                                      "mail-a: s@t.u\n"
                                      "s@t.u\n"
                                      "rfc822mailbox:v@w.x",
                                      directory));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "g@h.i", "j@k.l", "m@n.o", "p@q.r", "v@w.x"}), now());
}

TEST_P(ImportingAddresses, DirectoryLinesAreNeitherDecodedNorJoined) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("mail:: YUBiLmM=\nmail: d@exam\n ple.org\nmail: g@h\n", directory));
    EXPECT_EQ((Lines{"d@exam", "g@h"}), now());
    EXPECT_EQ(Lines{"Address 'YUBiLmM=' is not valid. Skip!"}, messages.all());
}

TEST_P(ImportingAddresses, DirectoryLinesWithoutAValueOrANameAreSkipped) {
    EXPECT_CODE(ZXPOL_S_OK, importing("mail:\nmail: \nmail\n: x@y.z\n:x@y.z\n:\n-\n\nmail: a@b.c\nmail:", directory));
    EXPECT_EQ(Lines{"a@b.c"}, now());
}

TEST_P(ImportingAddresses, ALongLineOfAnotherAttributeIsSkippedWhole) {
    const std::string rest = "description: " + std::string(498, 'd') + " mail: x@y.z mail: x@y.z\n";
    EXPECT_CODE(ZXPOL_S_OK, importing(rest + std::string(100000, 'e') + "\nmail: a@b.c\n", directory));
    EXPECT_EQ(Lines{"a@b.c"}, now());
    // The rest of a line begins no line of its own, wherever the line is cut.
    for (size_t length = 505; length <= 515; ++length) {
        const std::string line = "cn: " + std::string(length - 4, 'c') + "mail: x@y.z\n";
        EXPECT_CODE(ZXPOL_S_OK, importing(line + "mail: a@b.c\n", directory)) << length;
        EXPECT_EQ(Lines{"a@b.c"}, now()) << length;
    }
}

TEST_P(ImportingAddresses, ALongDirectoryLineGetsBackWhatItsNameTook) {
    // A line of 511 characters is whole.
    const std::string whole = sized(505, 'a');
    EXPECT_CODE(ZXPOL_S_OK, importing("mail: " + whole + "\n", directory));
    EXPECT_EQ(Lines{whole}, now());
    // Of a longer one the 512th is dropped; as many as name and blanks took are read behind it.
    for (const size_t length : {506u, 507u, 512u}) {
        const std::string given = sized(length, 'a');
        const std::string kept = given.substr(0, 505) + given.substr(506);
        EXPECT_CODE(ZXPOL_S_OK, importing("mail: " + given + "\n", directory)) << length;
        EXPECT_EQ(Lines{kept}, now()) << length;
    }
    EXPECT_CODE(ZXPOL_S_OK, importing("mail: " + sized(512, 'a') + " \t\r\nmail: a@b.c\n", directory));
    EXPECT_EQ(2u, now().size());
    EXPECT_CODE(ZXPOL_E_PARSE, importing("mail: " + sized(513, 'a') + "\nmail: a@b.c\n", directory));
}

// ---- long lines -------------------------------------------------------------------------------------------

TEST_P(ImportingAddresses, LinesOf510And511CharactersAreWhole) {
    for (const char* end : {"\n", "\r\n", "", " \n"}) {
        for (const size_t length : {509u, 510u, 511u}) {
            const std::string address = sized(length, 'a');
            EXPECT_CODE(ZXPOL_S_OK, importing("b@c.d\n" + address + end)) << length << end;
            EXPECT_EQ((Lines{"b@c.d", address}), now()) << length << end;
        }
    }
}

TEST_P(ImportingAddresses, ALineOf512CharactersIsCut) {
    const std::string address = sized(512, 'a');
    for (const char* end : {"\n", "", "\r\n", "   \t\n", "  \t\r"}) {
        const std::string after = *end == '\0' || end[std::strlen(end) - 1] == '\r' ? "" : "b@c.d\n";
        EXPECT_CODE(ZXPOL_S_OK, importing(address + end + after)) << end;
        EXPECT_EQ(Lines{address.substr(0, 511)} + (after.empty() ? Lines{} : Lines{"b@c.d"}), now()) << end;
    }
}

TEST_P(ImportingAddresses, ALongerLineEndsTheImport) {
    for (const size_t length : {513u, 514u, 1u << 20}) {
        const std::string content = "a@b.c\n" + sized(length, 'x') + "\nd@e.f\n";
        EXPECT_CODE(ZXPOL_S_OK, importing("old@b.c\n"));
        EXPECT_CODE(ZXPOL_E_PARSE, import(list(), TestFile(content).path())) << length;
        // What was not handed over yet is not imported.
        EXPECT_EQ(Lines{"old@b.c"}, now()) << length;
        EXPECT_CODE(ZXPOL_E_PARSE, importing(content)) << length;
        EXPECT_EQ(Lines{}, now()) << length;
    }
    EXPECT_CODE(ZXPOL_E_PARSE, importing(sized(512, 'x') + "   y"));
}

TEST_P(ImportingAddresses, ALongLineLeavesWhatWasHandedOverBefore) {
    std::string content;
    Lines all;
    for (size_t at = 0; at < 2050; ++at) {
        all.push_back("u" + std::to_string(at) + "@x.y");
        content += all.back() + "\n";
    }
    EXPECT_CODE(ZXPOL_E_PARSE, importing(content + std::string(2000, 'x') + "\n"));
    EXPECT_EQ(Lines(all.begin(), all.begin() + 2047), now());
}

TEST_P(ImportingAddresses, BlanksBeforeALineDoNotCount) {
    EXPECT_CODE(ZXPOL_S_OK, importing(std::string(5000, ' ') + "a@b.c" + std::string(400, ' ') + "\nd@e.f\n"));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), now());
}

// ---- arguments --------------------------------------------------------------------------------------------

TEST_P(ImportingAddresses, ArgumentsOutOfRangeAreRefused) {
    const TestFile file("a@b.c\n");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), file.path(), 2, 0));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), file.path(), 0xffffffffu, 0));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), file.path(), 0, 2));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), ""));
    int error = ZXPOL_S_OK;
    zxpol_importAddress(list().get(), 0, 0, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(Lines{"old@b.c"}, now());
}

TEST_P(ImportingAddresses, AFileThatCannotBeOpenedChangesNothing) {
    EXPECT_CODE(ZXPOL_E_FILE_OPEN, import(list(), "/nowhere/at/all", plain, 1));
    EXPECT_EQ(Lines{"old@b.c"}, now());
}

TEST_P(ImportingAddresses, FiveThousandAddressesKeepTheirOrder) {
    std::string content;
    Lines all;
    for (size_t at = 0; at < 5000; ++at) {
        all.push_back("user" + std::to_string(at * 4999 % 5000) + "@x.y");
        content += all.back() + "\n";
    }
    EXPECT_CODE(ZXPOL_S_OK, importing(content));
    EXPECT_EQ(all, now());
    EXPECT_CODE(ZXPOL_S_OK, import(list(), TestFile(content).path()));
    EXPECT_EQ(all, now());
}

}  // namespace
