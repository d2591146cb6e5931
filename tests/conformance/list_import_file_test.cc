// Importing files that are no well-meant text: binary, endless, no files at all, or changing while they are read.
#include <sys/stat.h>

#include <thread>

#include "support/list_fixture.h"

namespace {

using zxtest::Lines;
using zxtest::TestFile;

class ImportingOddFiles : public zxtest::ImportTest {
protected:
    // A path of exactly `length` characters that leads to the file.
    static std::string padded(const std::string& path, size_t length) {
        std::string longer = path;
        const size_t name = path.rfind('/') + 1;
        while (longer.size() + 2 <= length)
            longer.insert(name, "./");
        if (longer.size() < length) longer.insert(name, "/");
        return longer;
    }
};
ZXTEST_ON_BOTH_ENGINES(ImportingOddFiles);

TEST_P(ImportingOddFiles, BytesAbove7fMakeALineInvalid) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("a@b.c\nj\xc3\xb6rg@b.c\nx@\xff.c\n\xef\xbb\xbf"
                                                  "d@e.f\ng@h.i\n"));
    EXPECT_EQ((Lines{"a@b.c", "g@h.i"}), now());
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("mail: \xa0x@y.z\nmail: a@b.c\nm\xe4il: x@y.z\n", 1));
    EXPECT_EQ(Lines{"a@b.c"}, now());
}

TEST_P(ImportingOddFiles, NulBytesHarmNoOtherLine) {
    using namespace std::string_literals;
    const std::string files[] = {"a@b.c\nd@e\0.f\n\0\n\0\0g@h.i\nj@k.l\n"s,
                                 "mail: a@b.c\n\0mail: x@y.z\nma\0il: x@y.z\nmail\0: x@y.z\nmail: j@k.l\n"s};
    for (const uint32_t format : {0u, 1u}) {
        const int code = importing(files[format], format);
        EXPECT_TRUE(code == ZXPOL_S_OK || code == ZXPOL_E_INVALID_FORMAT) << zxtest::codeText(code);
        const Lines found = now();
        EXPECT_EQ(1, std::count(found.begin(), found.end(), "a@b.c"));
        EXPECT_EQ(1, std::count(found.begin(), found.end(), "j@k.l"));
        // What stands before a NUL may count as the whole line; nothing behind one does.
        for (const std::string& address : found)
            EXPECT_TRUE(address == "a@b.c" || address == "j@k.l" || address == "d@e") << address;
    }
}

TEST_P(ImportingOddFiles, AFileOfNulBytesIsNoAddress) {
    const int code = importing(std::string(511, '\0') + "\n");
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, code);
    EXPECT_EQ(Lines{}, now());
}

TEST_P(ImportingOddFiles, BlankLinesInAnyNumber) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing(std::string(200000, '\n')));
    EXPECT_EQ(Lines{"old@b.c"}, now());
    EXPECT_CODE(ZXPOL_S_OK, importing(std::string(200000, '\n') + "a@b.c" + std::string(200000, '\n') + "d@e.f"));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), now());
}

TEST_P(ImportingOddFiles, AMegabyteWithoutALineEnd) {
    EXPECT_CODE(ZXPOL_E_PARSE, importing("a@b.c\n" + std::string(1u << 20, 'x')));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, importing("cn: " + std::string(1u << 20, 'x'), 1));
    EXPECT_CODE(ZXPOL_S_OK, importing("a@b.c" + std::string(1u << 20, ' ') + "\n"));
    EXPECT_EQ(Lines{"a@b.c"}, now());
}

TEST_P(ImportingOddFiles, ADirectoryCannotBeRead) {
    EXPECT_CODE(ZXPOL_E_FILE_READ, import(list(), ::testing::TempDir(), 0, 1));
    EXPECT_CODE(ZXPOL_E_FILE_READ, import(list(), ::testing::TempDir(), 1, 1));
    EXPECT_EQ(Lines{"old@b.c"}, now());
}

TEST_P(ImportingOddFiles, AFileThatCannotBeReadIsReported) {
    EXPECT_CODE(ZXPOL_E_FILE_READ, import(list(), "/proc/self/mem", 0, 1));
    EXPECT_EQ(Lines{"old@b.c"}, now());
}

TEST_P(ImportingOddFiles, APipeIsReadToItsEnd) {
    const TestFile place;
    const std::string path = place.path() + ".pipe";
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    Lines all;
    for (size_t at = 0; at < 3000; ++at)
        all.push_back("u" + std::to_string(at) + "@x.y");
    std::thread writer([&] {
        std::ofstream pipe(path);
        for (const std::string& address : all)
            pipe << address << '\n' << std::flush;
    });
    EXPECT_CODE(ZXPOL_S_OK, import(list(), path, 0, 1));
    writer.join();
    std::remove(path.c_str());
    EXPECT_EQ(all, now());
}

// Truncates a file while it is imported: a message about the first of its addresses comes before the last are read.
std::string fileToTruncate;
void truncateTheFile(const char*) {
    if (!fileToTruncate.empty()) {
        EXPECT_EQ(0, truncate(fileToTruncate.c_str(), 10));
    }
    fileToTruncate.clear();
}

TEST_P(ImportingOddFiles, AFileTruncatedMeanwhileIsImportedUpToThere) {
    std::string content = "nowhere\n";
    Lines all;
    for (size_t at = 0; at < 20000; ++at) {
        all.push_back("user" + std::to_string(at) + "@somewhere.example");
        content += all.back() + "\n";
    }
    const TestFile file(content);
    fileToTruncate = file.path();
    int error = ZXPOL_S_OK;
    zxpol_setDebugFunction(truncateTheFile, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, import(list(), file.path(), 0, 1));
    zxpol_setDebugFunction(nullptr, &error);
    EXPECT_EQ("", fileToTruncate);
    const Lines found = now();
    ASSERT_GE(found.size(), 1000u);
    ASSERT_LT(found.size(), all.size());
    // The last line may have been cut.
    EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(found.size()) - 1),
              Lines(found.begin(), found.end() - 1));
    EXPECT_EQ(0u, all[found.size() - 1].find(found.back()));
}

TEST_P(ImportingOddFiles, PathsHave259CharactersAtMost) {
    const TestFile file("a@b.c\n");
    const std::string longest = padded(file.path(), 259), tooLong = padded(file.path(), 260);
    ASSERT_EQ(259u, longest.size());
    ASSERT_EQ(260u, tooLong.size());
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), tooLong, 0, 1));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, import(list(), std::string(100000, '/') + tooLong, 0, 1));
    EXPECT_EQ(Lines{"old@b.c"}, now());
    EXPECT_CODE(ZXPOL_S_OK, import(list(), longest, 0, 1));
    EXPECT_EQ(Lines{"a@b.c"}, now());
}

}  // namespace
