// The command line of the policy: what it takes, and what it runs.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>

#include "apply.h"
#include "command_words.h"
#include "dump_command.h"
#include "list_command_line.h"
#include "match_command.h"
#include "rule_tasks.h"
#include "text.h"
#include "tool_error.h"
#include "version.h"

namespace tool {

namespace {

constexpr const char* kStoreHelp = "The store: sqlite:PATH or memory:NAME";
constexpr const char* kStatusHelp =
    "Exit status: 0 success, 1 the answer is no, 2 wrong usage, 3 the store or the policy failed.";

const Words<ZxPolMatchPriorityType> kPriorities{{"total", ZXPOL_PRIORITY_TOTAL},
                                                {"sender", ZXPOL_PRIORITY_SENDER_FIRST},
                                                {"receiver", ZXPOL_PRIORITY_RECEIVER_FIRST}};
TaskLookup lookupTasks(const Store& store) {
    return [tasks = std::make_shared<const RuleTasks>(store)](const std::string& rulePath) {
        return tasks->namesOf(rulePath);
    };
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
        _lists.emplace(_app, _store, _command);
    }

    int run(int argc, char** argv) {
        try {
            _app.parse(argc, argv);
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
            return "a command is needed: apply, dump, match or list";
        return oneLine(wrong.what());
    }

    void addApply() {
        CLI::App& command = *_app.add_subcommand("apply", "Make the store hold exactly the policy in a file");
        command.add_option("FILE", _apply.file, "The policy file; - is standard input")->required();
        command.add_flag("--dry-run", _apply.isDryRun, "Say what would change, and change nothing");
        addReport(command, _apply.format);
        command.callback([this] {
            _command = [this] {
                _apply.store = _store;
                runApply(_apply, std::cout, std::cerr);
                return kSuccess;
            };
        });
    }

    void addDump() {
        CLI::App& command = *_app.add_subcommand("dump", "Print the store's policy as a policy file");
        command.add_flag("--with-secrets", _dump.withSecrets, "Print the passwords of directory lists too");
        command.callback([this] {
            _command = [this] {
                _dump.store = _store;
                runDump(_dump, std::cout);
                return kSuccess;
            };
        });
    }

    void addMatch() {
        CLI::App& command = *_app.add_subcommand("match", "Decide on mails: which rule, which tasks");
        CLI::Option* sender =
            command.add_option("--sender", _match.sender, "The sender of a mail; <> is the null sender");
        CLI::Option* receivers = command.add_option("--receiver", _match.receivers, "The receivers of the mail");
        CLI::Option* envelopes =
            command.add_option("--envelopes", _envelopes,
                               "A file of mails, one a line: sender, TAB, receivers by comma; - is standard input");
        sender->type_name("ADDRESS")->needs(receivers)->excludes(envelopes);
        receivers->type_name("ADDRESS")->needs(sender)->excludes(envelopes);
        envelopes->type_name("FILE");
        CLI::Option* best = command.add_flag("--best", _match.match.isBest, "Take the best match, not the first");
        addWord(command, "--priority", _match.match.priority, kPriorities,
                "What the best match compares (default total)")
            ->needs(best);
        addWord(command, "--weight", _match.match.weight, weightWords(),
                "What weighs more in a pattern (default domain)")
            ->needs(best);
        addReport(command, _match.format);
        command.callback([this, sender, envelopes] {
            if (sender->count() == 0 && envelopes->count() == 0)
                throw CLI::ValidationError("match needs --sender and --receiver, or --envelopes");
            // An empty path is a path, if a bad one.
            if (envelopes->count() != 0) _match.envelopes = _envelopes;
            _match.tasks = lookupTasks;
            _command = [this] {
                _match.store = _store;
                runMatch(_match, std::cout);
                return kSuccess;
            };
        });
    }

    CLI::App _app{"Keeps a mail-filtering policy in a store, and decides on mails by it.", "zxpolicy"};
    std::string _store = "sqlite:policy.db";
    ApplyOptions _apply;
    DumpOptions _dump;
    std::string _envelopes;
    MatchCommandOptions _match;
    ListCommandLine::Command _command;
    std::optional<ListCommandLine> _lists;
};

// Runs the program; every failure becomes one line on standard error.
int runProgram(int argc, char** argv) {
    try {
        const int status = CommandLine().run(argc, argv);
        std::cout.flush();
        if (!std::cout) throw ToolError(kFailed, "cannot write to standard output: check the disk's free space");
        return status;
    } catch (const ToolError& failure) {
        std::cerr << "zxpolicy: " << failure.what() << '\n';
        return failure.status();
    } catch (const std::bad_alloc&) {
        std::cerr << "zxpolicy: there is not enough memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "zxpolicy: internal failure: " << oneLine(failure.what()) << "; please report it\n";
    }
    return kFailed;
}

}  // namespace

}  // namespace tool

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return tool::runProgram(argc, argv);
}
