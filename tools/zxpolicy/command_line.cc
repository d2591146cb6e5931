#include "command_line.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>

#include "analysis/lint_command.h"
#include "change/apply.h"
#include "command_options.h"
#include "decisions/match_command.h"
#include "decisions/replay_command.h"
#include "decisions/task_lookup.h"
#include "decisions/test_command.h"
#include "edit_command_line.h"
#include "explanation/explain_command.h"
#include "lists/list_commands.h"
#include "output/standard_output.h"
#include "output/text.h"
#include "report/report_command.h"
#include "stored/dump_command.h"
#include "stored/refs_command.h"
#include "tool_error.h"
#include "version.h"

namespace tool {

namespace {

constexpr const char* kStoreHelp = "The store: sqlite:PATH or memory:NAME";
constexpr const char* kStatusHelp =
    "Exit status: 0 success, 1 the answer is no, 2 wrong usage, 3 the store or the policy failed.";
constexpr const char* kEnvelopesHelp =
    "A file of mails, one a line: sender, TAB, receivers by comma; - is standard input";

const Words<ListOrder> kOrders{
    {"user", ListOrder::User}, {"ascending", ListOrder::Ascending}, {"descending", ListOrder::Descending}};
const Words<AddressFileFormat> kFileFormats{{"plain", AddressFileFormat::Plain},
                                            {"directory", AddressFileFormat::Directory}};

// The arguments as the parser takes them: the last one first. It would take what follows "--name=" for the value that
// is not there; behind a name by itself it takes the empty text.
std::vector<std::string> argumentsOf(int argc, char** argv) {
    std::vector<std::string> arguments;
    bool isOption = true;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        isOption = isOption && argument != "--";
        const bool isWithoutValue =
            isOption && argument.rfind("--", 0) == 0 && argument.find('=') + 1 == argument.size();
        arguments.push_back(isWithoutValue ? argument.substr(0, argument.size() - 1) : argument);
        if (isWithoutValue) arguments.emplace_back();
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

// The options and commands, and the command that was chosen.
class CommandLine {
public:
    CommandLine() {
        _app.require_subcommand(1);
        _app.fallthrough();
        _app.footer(kStatusHelp);
        _app.set_version_flag("--version", versionText());
        _app.add_option("--store", _store, kStoreHelp)
            ->envname("ZXPOLICY_STORE")
            ->type_name("LOCATION")
            ->capture_default_str();
        addApply();
        addDump();
        addMatch();
        addExplain();
        addRefs();
        addLint();
        addList();
        addTest();
        addReplay();
        addReportPage();
        _edits.addTo(_app, [this](CLI::App& command, const EditCommands::Run& run) {
            command.callback([this, run] { _command = [this, run] { return run(_store); }; });
        });
    }

    int run(int argc, char** argv) {
        try {
            _app.parse(argumentsOf(argc, argv));
        } catch (const CLI::Success& success) {
            return _app.exit(success), kSuccess;
        } catch (const CLI::ParseError& wrong) {
            throw UsageError(explain(wrong) + " (try --help)");
        }
        return _command();
    }

private:
    std::string explain(const CLI::ParseError& wrong) const {
        const bool hasNoCommand = _app.get_subcommands().empty();
        const std::vector<std::string> unknown = _app.remaining();
        if (hasNoCommand && !unknown.empty()) return "there is no command or option " + inQuotes(unknown.front());
        if (hasNoCommand && wrong.get_name() == "RequiredError")
            return "a command is needed: apply, dump, match, explain, test, replay, lint, report, diff, tree, rule, "
                   "task, classification, list or refs";
        return oneLine(wrong.what());
    }

    // Has `run` called when the command is chosen, with the store in its options by then.
    template <class Options>
    void onCall(CLI::App& command, Options& options, std::function<ExitStatus()> run) {
        command.callback([this, &options, run = std::move(run)] {
            options.store = _store;
            _command = run;
        });
    }

    void addApply() {
        CLI::App& command = *_app.add_subcommand("apply", "Make the store hold exactly the policy in a file");
        command.add_option("FILE", _apply.file, "The policy file; - is standard input")->required();
        command.add_flag("--dry-run", _apply.isDryRun, kDryRunHelp);
        command.add_flag("--allow-dangling", _apply.allowsDangling,
                         "Only warn of conditions that name no list of the file");
        addReport(command, _apply.format);
        onCall(command, _apply, [this] { return runApply(_apply, reportOutput(_apply.format), std::cerr), kSuccess; });
    }

    void addDump() {
        CLI::App& command = *_app.add_subcommand("dump", "Print the store's policy as a policy file");
        command.add_flag("--with-secrets", _dump.withSecrets, "Print the passwords of directory lists too");
        onCall(command, _dump, [this] { return runDump(_dump, std::cout), kSuccess; });
    }

    void addMatch() {
        CLI::App& command = *_app.add_subcommand("match", "Decide on mails: which rule, which tasks");
        CLI::Option* sender =
            command.add_option("--sender", _match.sender, "The sender of a mail; <> is the null sender");
        CLI::Option* receivers = command.add_option("--receiver", _match.receivers, "The receivers of the mail");
        CLI::Option* envelopes = command.add_option("--envelopes", _file, kEnvelopesHelp);
        sender->type_name("ADDRESS")->needs(receivers)->excludes(envelopes);
        receivers->type_name("ADDRESS")->needs(sender)->excludes(envelopes);
        envelopes->type_name("FILE");
        addMatchOptions(command, _match.match);
        addReport(command, _match.format);
        command.callback([this, sender, envelopes] {
            if (sender->count() == 0 && envelopes->count() == 0)
                throw CLI::ValidationError("match needs --sender and --receiver, or --envelopes");
            // An empty path is a path, if a bad one.
            if (envelopes->count() != 0) _match.envelopes = _file;
            _match.tasks = lookupTasks;
            _match.store = _store;
            _command = [this] { return runMatch(_match, reportOutput(_match.format)), kSuccess; };
        });
    }

    void addExplain() {
        CLI::App& command = *_app.add_subcommand("explain", "Say how a mail is decided, step by step");
        command.add_option("--sender", _explain.sender, "The sender of the mail; <> is the null sender")
            ->type_name("ADDRESS")
            ->required();
        command.add_option("--receiver", _explain.receivers, "The receivers of the mail")
            ->type_name("ADDRESS")
            ->required();
        addMatchOptions(command, _explain.match);
        addReport(command, _explain.format);
        onCall(command, _explain, [this] { return runExplain(_explain, reportOutput(_explain.format)), kSuccess; });
    }

    void addRefs() {
        CLI::App& refs = *_app.add_subcommand("refs", "Say which rules refer to an address list or a classification");
        refs.require_subcommand(1);
        const auto addKind = [&](const char* name, const char* help, ZxPolRefEntity entity) {
            CLI::App& command = *refs.add_subcommand(name, help);
            command.add_option("NAME", _refs.name, "Its name, without parentheses; letter case does not count")
                ->required();
            addReport(command, _refs.format);
            command.footer("Exit status: 0 rules refer to it, 1 none does.");
            onCall(command, _refs, [this, entity] {
                _refs.entity = entity;
                return runRefs(_refs, reportOutput(_refs.format));
            });
        };
        addKind("list", "Rules with a condition on an address list", ZXPOL_REF_ADDRLIST);
        addKind("classification", "Rules with an outcome that names a classification", ZXPOL_REF_CLASSIFICATION);
    }

    void addLint() {
        CLI::App& command = *_app.add_subcommand("lint", "Look for what is wrong with a policy, or has no effect");
        command.add_option("POLICY", _lint.policy, "A policy file or a store (default the store of --store)");
        addWord(command, "--priority", _lint.match.priority, kPriorities,
                "What the best match compares (default total)");
        addWord(command, "--weight", _lint.match.weight, kWeights, "What weighs more in a pattern (default domain)");
        command.add_flag("--strict", _lint.isStrict, "Count warnings as errors");
        addReport(command, _lint.format);
        command.footer("Exit status: 0 no error was found, 1 some were.");
        onCall(command, _lint, [this] { return runLint(_lint, reportOutput(_lint.format), std::cerr); });
    }

    void addList() {
        CLI::App& list = *_app.add_subcommand("list", "Look at address lists, and change them");
        list.require_subcommand(0, 1);
        list.footer("Without a command: all lists. Behind -- everything is a name or an address.");
        addReport(list, _overview.format);
        list.add_flag("--names", _overview.onlyNames, "Print the names alone, one a line")
            ->excludes(list.get_option("--json"))
            ->excludes(list.get_option("--format"));
        // The commands' own callbacks come before this one.
        list.callback([this, &list] {
            if (!list.get_subcommands().empty()) return;
            _overview.store = _store;
            _command = [this] {
                return runListOverview(_overview, _overview.onlyNames ? std::cout : reportOutput(_overview.format));
            };
        });
        addShow(list);
        addCheck(list);
        addEdit(list, "add", "Add addresses to a list", "Exit status: 1 some are invalid, the others are in.",
                runListAdd);
        addEdit(list, "remove", "Remove addresses from a list",
                "Exit status: 1 some are not in the list, the others are gone.", runListRemove);
        addImport(list);
        addExport(list);
    }

    void addShow(CLI::App& list) {
        CLI::App& command = *list.add_subcommand("show", "Print the addresses of a list; without a name, all lists");
        CLI::Option* name = command.add_option("NAME", _show.name, "The list");
        addWord(
            command, "--order", _show.order, kOrders,
            "user: as they were added (default); ascending: patterns first, then by text; descending: that backwards");
        addReport(command, _show.format);
        onCall(command, _show, [this, name] {
            if (name->count() != 0) return runListShow(_show, std::cout);
            _overview.store = _show.store;
            _overview.format = _show.format;
            return runListOverview(_overview, reportOutput(_overview.format));
        });
    }

    void addCheck(CLI::App& list) {
        CLI::App& command =
            *list.add_subcommand("check", "Say which entry of a list matches an address, and its weight");
        command.add_option("NAME", _check.name, "The list")->required();
        command.add_option("ADDRESS", _check.address, "The address; <> is the null sender")->required();
        addWord(command, "--weight", _check.weight, kWeights, "What weighs more in a pattern (default domain)");
        addReport(command, _check.format);
        command.footer("Exit status: 0 the list matches, 1 it does not.");
        onCall(command, _check, [this] { return runListCheck(_check, reportOutput(_check.format)); });
    }

    using RunEdit = ExitStatus (*)(const ListEditOptions&, std::ostream&, std::ostream&);

    void addEdit(CLI::App& list, const char* name, const char* help, const char* status, RunEdit edit) {
        CLI::App& command = *list.add_subcommand(name, help);
        command.add_option("NAME", _edit.name, "The list")->required();
        command.add_option("ADDRESS", _edit.addresses, "Addresses, or patterns such as *@example.com")->required();
        command.add_flag("--dry-run", _edit.isDryRun, kDryRunHelp);
        addReport(command, _edit.format);
        command.footer(status);
        onCall(command, _edit, [this, edit] { return edit(_edit, reportOutput(_edit.format), std::cerr); });
    }

    void addImport(CLI::App& list) {
        CLI::App& command = *list.add_subcommand("import", "Add the addresses of a file to a list");
        command.add_option("NAME", _import.name, "The list")->required();
        command.add_option("FILE", _import.file, "The file; - is standard input")->required();
        addWord(command, "--format", _import.fileFormat, kFileFormats,
                "The file's format. plain: one address a line (default). directory: the lines of the attributes mail "
                "and rfc822mailbox of a directory export");
        command.add_flag("--replace", _import.isReplacing, "Remove the addresses that the list holds");
        command.add_flag("--create", _import.mayCreate, "Make the list when there is none of this name");
        command.add_flag("--dry-run", _import.isDryRun, kDryRunHelp);
        addReport(command, _import.format, false);
        command.footer("Exit status: 1 some lines are invalid, the others are in; 2 the file cannot be used.");
        onCall(command, _import, [this] { return runListImport(_import, reportOutput(_import.format), std::cerr); });
    }

    void addExport(CLI::App& list) {
        CLI::App& command = *list.add_subcommand("export", "Write the addresses of a list to a file, one a line");
        command.add_option("NAME", _export.name, "The list")->required();
        CLI::Option* file = command.add_option("FILE", _file, "The file (default standard output)");
        onCall(command, _export, [this, file] {
            if (file->count() != 0) _export.file = _file;
            return runListExport(_export, std::cout);
        });
    }

    void addTest() {
        CLI::App& command = *_app.add_subcommand("test", "Run policy tests: mails, and what must become of them");
        command.add_option("FILE", _test.file, "The file of the tests; - is standard input")->required();
        command
            .add_option("--policy", _test.policy, "Test this policy, in a file or a store, not the store of --store")
            ->type_name("LOCATION|FILE");
        addNumber(command, "--min-coverage", _test.minCoverage,
                  "How many of 100 rules, conditions and tasks must be tested", 0, 100)
            ->type_name("PERCENT");
        addReport(command, _test.format);
        command.footer("Exit status: 1 a test failed, or too little is tested; 2 the file of the tests is malformed.");
        _test.tasks = lookupTasks;
        onCall(command, _test, [this] { return runTest(_test, reportOutput(_test.format), std::cerr); });
    }

    void addReportPage() {
        CLI::App& command = *_app.add_subcommand("report", "Write a page on the policy and recorded traffic");
        command.add_option("--envelopes", _report.envelopes, kEnvelopesHelp)->required()->type_name("FILE");
        command.add_option("--html", _report.html, "The page to write")->required()->type_name("FILE");
        addNumber(command, "--roads", _report.roads, "How many mails to explain at most (default 200)");
        addMatchOptions(command, _report.match);
        command.footer("Exit status: 0 success, 1 a line of the traffic is bad, or a mail cannot be matched.");
        _report.tasks = lookupTasks;
        onCall(command, _report, [this] { return runReport(_report, reportOutput(OutputFormat::Text), std::cerr); });
    }

    void addReplay() {
        CLI::App& command = *_app.add_subcommand("replay", "Decide on recorded mails, and add the decisions up");
        command.add_option("--envelopes", _replay.envelopes, kEnvelopesHelp)->type_name("FILE")->required();
        CLI::Option* against =
            command.add_option("--against", _replay.against, "Tell what another policy would decide otherwise");
        against->type_name("LOCATION|FILE");
        command.add_option("--changes", _replay.changes, "Write each receiver treated otherwise to this file")
            ->type_name("FILE")
            ->needs(against);
        addNumber(command, "--samples", _replay.samples, "How many of each kind of change to show (default 5)")
            ->needs(against);
        addNumber(command, "--bad-lines", _replay.badLines, "How many bad lines to show (default 10)");
        addMatchOptions(command, _replay.match);
        addReport(command, _replay.format);
        command.footer("Exit status: 1 a line is bad, a mail cannot be matched, or a decision would change.");
        _replay.tasks = lookupTasks;
        onCall(command, _replay, [this] { return runReplay(_replay, reportOutput(_replay.format), std::cerr); });
    }

    CLI::App _app{"Keeps a mail-filtering policy in a store, and decides on mails by it.", "zxpolicy"};
    std::string _store = "sqlite:policy.db";
    ApplyOptions _apply;
    DumpOptions _dump;
    std::string _file;
    MatchCommandOptions _match;
    ExplainOptions _explain;
    RefsOptions _refs;
    LintOptions _lint;
    ListOverviewOptions _overview;
    ListShowOptions _show;
    ListCheckOptions _check;
    ListEditOptions _edit;
    ListImportOptions _import;
    ListExportOptions _export;
    TestOptions _test;
    ReplayOptions _replay;
    ReportOptions _report;
    EditCommands _edits;
    std::function<ExitStatus()> _command;
};

}  // namespace

int runCommandLine(int argc, char** argv) {
    return CommandLine().run(argc, argv);
}

}  // namespace tool
