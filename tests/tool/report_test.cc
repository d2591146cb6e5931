// The command report: what it writes, and what it does with texts that a page might take for its own.
#include <gmock/gmock.h>

#include <fstream>

#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;
using testing::Not;

class ReportTest : public ToolTest {
protected:
    Outcome report(const std::string& envelopes, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"report", "--envelopes", write("mails.tsv", envelopes), "--html",
                                           path("page.html")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }
    std::string page() const { return read(path("page.html")); }
};

const std::string kPolicy = policyWithRoot(R"(  tasks: [{name: scan}]
  rules: [{name: "</script><b>", conditions: [{sender: "*", receiver: "*@a.example"}]}]
)");

}  // namespace

TEST_F(ReportTest, WritesAPageWithTheTrafficTheFindingsAndTheRoads) {
    apply(kPolicy);
    const Outcome outcome = report("x@x.example\ty@a.example,z@b.example\n");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, path("page.html") + ": 2 mails explained\n");
    EXPECT_THAT(page(), HasSubstr("\"mails\":1,\"receivers\":2"));
    EXPECT_THAT(page(), HasSubstr("\"sender\":\"x@x.example\",\"receiver\":\"y@a.example\",\"road\":\""));
    EXPECT_THAT(page(), HasSubstr("\"errors\":0"));
}

TEST_F(ReportTest, LetsNoTextEndTheDataOfThePage) {
    apply(kPolicy);
    report("<script>@x.example\ty@a.example\n");
    EXPECT_THAT(page(), Not(HasSubstr("</script><b>")));
    EXPECT_THAT(page(), Not(HasSubstr("<script>@x")));
    EXPECT_THAT(page(), HasSubstr("\\u003cscript>@x.example"));
}

TEST_F(ReportTest, ExplainsSomeMailsOfEachRule) {
    apply(kPolicy);
    std::string mails;
    for (int i = 0; i < 50; ++i)
        mails += "s" + std::to_string(i) + "@x.example\tr@a.example\n";
    mails += "s@x.example\tr@b.example\n";
    EXPECT_EQ(report(mails, {"--roads", "3"}).out, path("page.html") + ": 3 mails explained\n");
    EXPECT_THAT(page(), HasSubstr("\"receiver\":\"r@b.example\",\"road\""));
}

TEST_F(ReportTest, CountsBadLines) {
    apply(kPolicy);
    const Outcome outcome = report("no tab\nx@x.example\ty@a.example\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(page(), HasSubstr("\"badLines\":{\"count\":1,"));
}

TEST_F(ReportTest, WritesNoPageWhereItCannot) {
    apply(kPolicy);
    const Outcome outcome =
        run({"report", "--envelopes", write("mails.tsv", "a@b\tc@d\n"), "--html", path("none/page.html")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("none/page.html\": No such file or directory"));
    const std::string mails = path("mails.tsv");
    const Outcome over = run({"report", "--envelopes", mails, "--html", path("./mails.tsv")});
    EXPECT_EQ(over.status, 2);
    EXPECT_THAT(over.err, HasSubstr("the command needs the file"));
    EXPECT_EQ(read(mails), "a@b\tc@d\n");
    const Outcome full = run({"report", "--envelopes", mails, "--html", "/dev/full"});
    EXPECT_EQ(full.status, 3);
    EXPECT_THAT(full.err, HasSubstr("cannot write \"/dev/full\": No space left on device"));
}

}  // namespace tool
