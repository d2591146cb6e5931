// The part of the command line that changes and shows rules, tasks and classifications, and compares policies.
#pragma once

#include <functional>
#include <string>

#include "analysis/diff_command.h"
#include "change/classification_commands.h"
#include "change/rule_commands.h"
#include "show/classification_show.h"
#include "show/rule_show.h"
#include "tool_error.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tool {

class EditCommands {
public:
    // Runs a command on the store that the command line names.
    using Run = std::function<ExitStatus(const std::string& store)>;
    // Has `run` called when the command is chosen.
    using OnCall = std::function<void(CLI::App& command, const Run& run)>;

    // Adds the commands to the program, which this must outlive.
    void addTo(CLI::App& app, const OnCall& onCall);

private:
    using RunRuleEdit = void (*)(const RuleEditOptions&, std::ostream&, std::ostream&);
    using RunTaskEdit = void (*)(const TaskEditOptions&, std::ostream&, std::ostream&);
    using RunClassificationEdit = void (*)(const ClassificationEditOptions&, std::ostream&, std::ostream&);
    using RunShow = void (*)(const RuleShowOptions&, std::ostream&);

    void addTree(CLI::App& app);
    void addRule(CLI::App& app);
    void addTask(CLI::App& app);
    void addClassification(CLI::App& app);
    void addDiff(CLI::App& app);

    void addShow(CLI::App& group, const std::string& what, const char* pathHelp, RunShow run);
    void addClassificationShow(CLI::App& classification);
    CLI::App& addRuleEdit(CLI::App& rule, const char* name, const char* help, RunRuleEdit run);
    CLI::App& addTaskEdit(CLI::App& task, const char* name, const char* help, RunTaskEdit run);
    CLI::App& addClassificationEdit(CLI::App& classification, const char* name, const char* help,
                                    RunClassificationEdit run);
    void addTaskAttributes(CLI::App& command);
    void addClassificationAttributes(CLI::App& command);

    OnCall _onCall;
    RuleShowOptions _show;
    ClassificationShowOptions _classificationShow;
    RuleEditOptions _rule;
    TaskEditOptions _task;
    ClassificationEditOptions _classification;
    DiffOptions _diff;
    bool _comparesDecisions = false;
};

}  // namespace tool
