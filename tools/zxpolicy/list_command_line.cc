#include "list_command_line.h"

#include <iostream>

#include "command_words.h"

namespace tool {

namespace {

const Words<ListOrder>& orderWords() {
    static const Words<ListOrder> kWords{
        {"user", ListOrder::User}, {"ascending", ListOrder::Ascending}, {"descending", ListOrder::Descending}};
    return kWords;
}

const Words<AddressFileFormat>& fileWords() {
    static const Words<AddressFileFormat> kWords{{"plain", AddressFileFormat::Plain},
                                                 {"directory", AddressFileFormat::Directory}};
    return kWords;
}

constexpr const char* kDryRunHelp = "Say what would change, and change nothing";

}  // namespace

ListCommandLine::ListCommandLine(CLI::App& app, const std::string& store, Command& command)
    : _list(*app.add_subcommand("list", "Look at address lists, and change them")), _store(store), _command(command) {
    _list.require_subcommand(0, 1);
    _list.footer("Without a command: all lists. Behind -- everything is a name or an address.");
    addReport(_list, _overview.format);
    // The commands' own callbacks come before this one.
    _list.callback([this] {
        if (!_list.get_subcommands().empty()) return;
        _overview.store = _store;
        _command = [this] { return runListOverview(_overview, std::cout); };
    });
    addShow();
    addCheck();
    addEdits();
    addImport();
    addExport();
}

CLI::App& ListCommandLine::add(const std::string& name, const std::string& help) {
    return *_list.add_subcommand(name, help);
}

// Has `run` called with the options when the command is chosen.
template <class Options, class Run>
void ListCommandLine::onCall(CLI::App& command, Options& options, Run run) {
    command.callback([this, &options, run] {
        options.store = _store;
        _command = run;
    });
}

void ListCommandLine::addShow() {
    CLI::App& command = add("show", "Print the addresses of a list; without a name, all lists");
    CLI::Option* name = command.add_option("NAME", _show.name, "The list");
    addWord(command, "--order", _show.order, orderWords(),
            "user: as they were added (default); ascending: patterns first, then by text; descending: that backwards");
    addReport(command, _show.format);
    onCall(command, _show, [this, name] {
        return name->count() == 0 ? runListOverview(_show, std::cout) : runListShow(_show, std::cout);
    });
}

void ListCommandLine::addCheck() {
    CLI::App& command = add("check", "Say which entry of a list matches an address, and its weight");
    command.add_option("NAME", _check.name, "The list")->required();
    command.add_option("ADDRESS", _check.address, "The address; <> is the null sender")->required();
    addWord(command, "--weight", _check.weight, weightWords(), "What weighs more in a pattern (default domain)");
    addReport(command, _check.format);
    command.footer("Exit status: 0 the list matches, 1 it does not.");
    onCall(command, _check, [this] { return runListCheck(_check, std::cout); });
}

void ListCommandLine::addEdits() {
    const auto addEdit = [this](const char* name, const char* help, const char* status, auto run) {
        CLI::App& command = add(name, help);
        command.add_option("NAME", _edit.name, "The list")->required();
        command.add_option("ADDRESS", _edit.addresses, "Addresses, or patterns such as *@example.com")->required();
        command.add_flag("--dry-run", _edit.isDryRun, kDryRunHelp);
        addReport(command, _edit.format);
        command.footer(status);
        onCall(command, _edit, [this, run] { return run(_edit, std::cout, std::cerr); });
    };
    addEdit("add", "Add addresses to a list", "Exit status: 1 some are invalid, the others are in.", runListAdd);
    addEdit("remove", "Remove addresses from a list", "Exit status: 1 some are not in the list, the others are gone.",
            runListRemove);
}

void ListCommandLine::addImport() {
    CLI::App& command = add("import", "Add the addresses of a file to a list");
    command.add_option("NAME", _import.name, "The list")->required();
    command.add_option("FILE", _import.file, "The file; - is standard input")->required();
    addWord(command, "--format", _import.fileFormat, fileWords(),
            "The file's format. plain: one address a line (default). directory: the lines of the attributes mail and "
            "rfc822mailbox of a directory export");
    command.add_flag("--replace", _import.isReplacing, "Remove the addresses that the list holds");
    command.add_flag("--create", _import.mayCreate, "Make the list when there is none of this name");
    command.add_flag("--dry-run", _import.isDryRun, kDryRunHelp);
    addReport(command, _import.format, false);
    command.footer("Exit status: 1 some lines are invalid, the others are in; 2 the file cannot be used.");
    onCall(command, _import, [this] { return runListImport(_import, std::cout, std::cerr); });
}

void ListCommandLine::addExport() {
    CLI::App& command = add("export", "Write the addresses of a list to a file, one a line");
    command.add_option("NAME", _export.name, "The list")->required();
    CLI::Option* file = command.add_option("FILE", _exportFile, "The file (default standard output)");
    onCall(command, _export, [this, file] {
        if (file->count() != 0) _export.file = _exportFile;
        return runListExport(_export, std::cout);
    });
}

}  // namespace tool
