#include "report/report_command.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <sstream>
#include <vector>

#include "analysis/lint.h"
#include "analysis/lint_report.h"
#include "decisions/fixed_policy.h"
#include "decisions/match_summary.h"
#include "decisions/traffic.h"
#include "explanation/explainer.h"
#include "explanation/explanation_report.h"
#include "output/folding.h"
#include "output/json.h"
#include "output/output_file.h"
#include "output/progress.h"
#include "output/text.h"
#include "report/report_page.h"

namespace tool {

namespace {

constexpr uint32_t kKeptBadLines = 10;
constexpr size_t kPageWidth = 110;

// The mails to one receiver that are explained: the first ones of each rule.
class Samples {
public:
    explicit Samples(uint32_t most) : _most(most) {}

    void add(const Envelope& envelope, const Decision& decision) {
        const auto byReceiver = decision.byReceiver();
        for (const std::string& receiver : envelope.receivers) {
            const auto found = byReceiver.find(receiver);
            std::vector<SampleMail>& mails = _mails[found == byReceiver.end() ? "" : found->second->path];
            const auto isSame = [&](const SampleMail& mail) {
                return mail.sender == envelope.sender && mail.receiver == receiver;
            };
            if (mails.size() < _most && std::none_of(mails.begin(), mails.end(), isSame))
                mails.push_back({envelope.sender, receiver});
        }
    }

    // One of each rule, then a second one of each, and so on.
    std::vector<SampleMail> chosen() const {
        std::vector<SampleMail> chosen;
        for (size_t round = 0, before = SIZE_MAX; chosen.size() < _most && before != chosen.size(); ++round) {
            before = chosen.size();
            for (const auto& [rule, mails] : _mails)
                if (round < mails.size() && chosen.size() < _most) chosen.push_back(mails[round]);
        }
        return chosen;
    }

private:
    size_t _most;
    std::map<std::string, std::vector<SampleMail>> _mails;  // by rule; the empty text for none
};

Json roadsJson(const Store& store, const MatchOptions& options, const std::vector<SampleMail>& mails) {
    Json roads = Json::array();
    for (const SampleMail& mail : mails) {
        std::ostringstream road;
        FoldedOutput folded(road, kPageWidth);
        printText(folded, explain(store, options, {mail.sender, {mail.receiver}}), Colours(false), kPageWidth);
        roads.add(Json::object({{"sender", mail.sender}, {"receiver", mail.receiver}, {"road", road.str()}}));
    }
    return roads;
}

// The options of explain that ask for the same way of matching.
std::string explainOptions(const MatchOptions& options) {
    if (!options.isBest) return "";
    std::string text = " --best";
    if (options.priority == ZXPOL_PRIORITY_SENDER_FIRST) text += " --priority sender";
    if (options.priority == ZXPOL_PRIORITY_RECEIVER_FIRST) text += " --priority receiver";
    if (options.weight == ZXPOL_WEIGHT_NAME_FIRST) text += " --weight name";
    return text;
}

// Nothing in the data may end the element of the page that holds it.
std::string forScript(const std::string& json) {
    std::string text;
    for (char c : json)
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    return text;
}

std::string pageOf(const std::string& data) {
    std::string page = kReportPage;
    const std::string place = "%DATA%";
    return page.replace(page.find(place), place.size(), forScript(data));
}

// What the policy decides on the traffic.
struct Decided {
    explicit Decided(uint32_t mostSamples) : samples(mostSamples) {}

    MatchSummary summary{MatchSummary::Conditions::Counted};
    Samples samples;
    RuleNode rules;
};

void decideTraffic(const ReportOptions& options, const Store& store, Traffic& traffic, Decided& decided) {
    Matcher matcher(store, options.match, options.tasks(store), Matcher::Conditions::Watched);
    Progress progress("mails", traffic.size());
    Envelope envelope;
    while (traffic.next(envelope)) {
        const Decision decision = matcher.decideOrFail(envelope);
        decided.summary.add(envelope, decision);
        if (decision.failure == 0) decided.samples.add(envelope, decision);
        progress.step(traffic.bytes());
    }
    progress.clear();
    decided.rules = readRuleTree(matcher.rules());
}

// What the page shows; `mails` are those that are explained.
Json pageData(const ReportOptions& options, const FixedPolicy& policy, const Decided& decided,
              const std::vector<SampleMail>& mails, const Traffic& traffic) {
    Json data = Json::report({{"policy", oneLine(policy.name())},
                              {"mode", options.match.isBest ? "best" : "first"},
                              {"options", explainOptions(options.match)}});
    data.add("traffic", decided.summary.json(decided.rules).add("badLines", traffic.badLinesJson()));
    data.add("roads", roadsJson(policy.store(), options.match, mails));
    return data.add("lint", lintJson(lintPolicy(policy.store(), options.match)));
}

std::vector<std::string> filesRead(const ReportOptions& options) {
    std::vector<std::string> files = filesOf(options.store);
    files.push_back(options.envelopes);
    return files;
}

}  // namespace

ExitStatus runReport(const ReportOptions& options, std::ostream& out, std::ostream& err) {
    const FixedPolicy policy(options.store);
    Traffic traffic(options.envelopes, kKeptBadLines);
    OutputFile page(options.html, filesRead(options));
    Decided decided(options.roads);
    decideTraffic(options, policy.store(), traffic, decided);
    const std::vector<SampleMail> mails = decided.samples.chosen();
    page.stream() << pageOf(pageData(options, policy, decided, mails, traffic).line());
    page.keep();
    out << oneLine(options.html) << ": " << counted(mails.size(), "mail") << " explained\n";
    decided.summary.failed().print(out);
    traffic.printBadLines(out);
    policy.noteIfOutdated(err);
    return traffic.badLines() == 0 && decided.summary.failed().mails() == 0 ? kSuccess : kAnswerIsNo;
}

}  // namespace tool
