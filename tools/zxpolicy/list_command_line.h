// The command line of the commands on address lists.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "list_commands.h"

namespace tool {

class ListCommandLine {
public:
    using Command = std::function<ExitStatus()>;

    // Adds the command "list" with its own commands to `app`. When one of them is chosen, `command` is set to what runs
    // it on the store that `store` names then. All must outlive the parsing and the running.
    ListCommandLine(CLI::App& app, const std::string& store, Command& command);
    ListCommandLine(const ListCommandLine&) = delete;
    ListCommandLine& operator=(const ListCommandLine&) = delete;

private:
    CLI::App& add(const std::string& name, const std::string& help);
    template <class Options, class Run>
    void onCall(CLI::App& command, Options& options, Run run);
    void addShow();
    void addCheck();
    void addEdits();
    void addImport();
    void addExport();

    CLI::App& _list;
    const std::string& _store;
    Command& _command;
    ListOptions _overview;
    ListShowOptions _show;
    ListCheckOptions _check;
    ListEditOptions _edit;
    ListImportOptions _import;
    ListExportOptions _export;
    std::string _exportFile;
};

}  // namespace tool
