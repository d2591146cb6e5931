// Two policies compared on all mails, and by traffic of the mails that the first comparison shows: both say the same.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "../support/experiment.h"
#include "analysis/diff_decisions_command.h"
#include "decisions/replay_command.h"
#include "decisions/task_lookup.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "small_policy.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using nlohmann::json;

using Mail = std::pair<std::string, std::string>;   // sender, receiver
using Rules = std::pair<std::string, std::string>;  // before and after, empty for none

// The rule, or that there is a failure in its place.
std::string outcomeIn(const json& rule, const json& failure) {
    if (!failure.is_null()) return "a failure";
    return rule.is_null() ? "" : rule.get<std::string>();
}

// Whether a file of mails can say the address.
bool canBeWritten(const std::string& address) {
    const bool hasBlankAround = !address.empty() && (address.front() == ' ' || address.back() == ' ');
    return address.find(',') == std::string::npos && address == oneLine(address) && !hasBlankAround;
}

bool canBeWritten(const Mail& mail) {
    return !mail.second.empty() && canBeWritten(mail.first) && canBeWritten(mail.second);
}

std::string linesOf(const std::vector<Mail>& mails) {
    std::string lines;
    for (const auto& [sender, receiver] : mails)
        lines += senderToText(sender) + '\t' + receiver + '\n';
    return lines;
}

std::vector<Mail> allSmallMails() {
    std::vector<Mail> mails;
    for (const std::string& sender : smallAddresses())
        for (const std::string& receiver : smallAddresses())
            if (canBeWritten({sender, receiver})) mails.emplace_back(sender, receiver);
    return mails;
}

using Changes = std::map<Mail, Rules>;

std::set<Rules> rulesIn(const Changes& changes) {
    std::set<Rules> rules;
    for (const auto& [mail, change] : changes)
        rules.insert(change);
    return rules;
}

class DecisionsAndTrafficTest : public ToolTest {
protected:
    // Compares two policies by both commands.
    void check(const Store& before, const Store& after, const MatchOptions& match) {
        const Changes expected = changesOfAllMails(before, after, match);
        std::vector<Mail> mails;
        for (const auto& [mail, rules] : expected)
            if (canBeWritten(mail)) mails.push_back(mail);
        Changes written;
        for (const Mail& mail : mails)
            written[mail] = expected.at(mail);
        EXPECT_EQ(changesOfTraffic(before, after, match, mails), written);
        const std::set<Rules> told = rulesIn(expected);
        for (const Rules& rules : rulesIn(changesOfTraffic(before, after, match, allSmallMails())))
            EXPECT_EQ(told.count(rules), 1U) << rules.first << " -> " << rules.second;
        if (expected.empty())
            ++same;
        else
            differing += mails.size();
    }

    size_t same = 0;
    size_t differing = 0;

private:
    // What diff --decisions tells: all kinds of mails, each by its witness.
    static Changes changesOfAllMails(const Store& before, const Store& after, const MatchOptions& match) {
        std::ostringstream out, err;
        const ExitStatus status =
            runDiffDecisions({before.location(), after.location(), match, 1000000, OutputFormat::Json}, out, err);
        Changes changes;
        const json report = json::parse(out.str());
        for (const json& change : report["changes"])
            for (const json& kind : change["kinds"])
                changes[{kind["sender"], kind["receiver"]}] = {
                    outcomeIn(change["before"]["rule"], change["before"].at("reason")),
                    outcomeIn(change["after"]["rule"], change["after"].at("reason"))};
        EXPECT_EQ(status, changes.empty() ? kSuccess : kAnswerIsNo);
        return changes;
    }

    // What replay --against tells of these mails.
    Changes changesOfTraffic(const Store& before, const Store& after, const MatchOptions& match,
                             const std::vector<Mail>& mails) const {
        ReplayOptions options;
        options.store = before.location();
        options.against = after.location();
        options.envelopes = write("mails.tsv", linesOf(mails));
        options.samples = 1000000;
        options.tasks = lookupTasks;
        options.match = match;
        options.format = OutputFormat::Json;
        std::ostringstream out, err;
        const ExitStatus status = runReplay(options, out, err);
        const json report = json::parse(out.str());
        EXPECT_EQ(report["badLines"]["count"], 0);
        Changes changes;
        for (const json& change : report["changes"])
            for (const json& mail : change["samples"])
                changes[{mail["sender"], mail["receiver"]}] = {outcomeIn(change["ruleBefore"], change["failureBefore"]),
                                                               outcomeIn(change["ruleAfter"], change["failureAfter"])};
        const bool hasFailed =
            report.at("failed").at("before").at("mails") != 0 || report.at("failed").at("after").at("mails") != 0;
        EXPECT_EQ(status, changes.empty() && !hasFailed ? kSuccess : kAnswerIsNo);
        return changes;
    }
};

}  // namespace

TEST_F(DecisionsAndTrafficTest, SayTheSame) {
    const auto pairs = zxtest::shortOrLong<uint32_t>(10, 3000);
    for (uint32_t seed = 1; seed <= pairs && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const auto kind = seed % 3 == 0 ? SmallPolicyKind::Foreign : SmallPolicyKind::Valid;
        const SmallPolicy before(seed, kind);
        SmallPolicy after(seed % 2 == 0 ? seed : seed + 1000000, kind);
        after.change(seed);
        const MatchOptions match = optionsOf(seed);
        check(before.store(), after.store(), match);
        check(after.store(), before.store(), match);
    }
    EXPECT_GT(same, 0U);
    EXPECT_GT(differing, pairs);
    zxtest::figure("analysis", "pairs of policies compared on all mails and by traffic", pairs);
    zxtest::figure("analysis", "mails that both comparisons tell", differing);
}

}  // namespace tool
