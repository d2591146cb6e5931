#include "edit_command_line.h"

#include <iostream>
#include <optional>

#include "analysis/diff_decisions_command.h"
#include "command_options.h"
#include "output/standard_output.h"

namespace tool {

namespace {

constexpr const char* kRuleHelp = "The rule, such as '\\Sales'";
constexpr const char* kTaskHelp = "The task's full name, such as '\\Sales\\scan'";

const Words<std::optional<bool>> kTruths{{"true", true}, {"false", false}};

// Adds an option whose value may be the empty text, which is not the same as no option.
void addText(CLI::App& command, const std::string& name, std::optional<std::string>& text, const std::string& help) {
    command
        .add_option_function<std::string>(
            name, [&text](const std::string& value) { text = value; }, help)
        ->type_name("TEXT");
}

void addTexts(CLI::App& command, TextEdit& texts) {
    addText(command, "--display-name", texts.displayName, "The name shown to users");
    addText(command, "--comment", texts.comment, "A comment");
}

// Adds an option that may stand several times, with one value each time.
void addEach(CLI::App& command, const std::string& name, std::vector<std::string>& values, const std::string& help,
             const char* type) {
    command.add_option(name, values, help)->allow_extra_args(false)->type_name(type);
}

CLI::Option* addPosition(CLI::App& command, std::optional<uint32_t>& position) {
    return addNumber(command, "--position", position, "Its place among its siblings, from 1", 1);
}

void addSettings(CLI::App& command, SettingEdit& settings) {
    addEach(command, "--setting", settings.set, "Set a setting; the value as in a policy file", "NAME=VALUE");
}

void addDangling(CLI::App& command, EditOptions& options, const char* help) {
    command.add_flag("--allow-dangling", options.allowsDangling, help);
}

CLI::App& addGroup(CLI::App& app, const char* name, const char* help) {
    CLI::App& group = *app.add_subcommand(name, help);
    group.require_subcommand(1);
    return group;
}

// What every command has that changes something.
void addEditOptions(CLI::App& command, EditOptions& options) {
    command.add_flag("--dry-run", options.isDryRun, kDryRunHelp);
    addReport(command, options.format);
}

void addRuleContents(CLI::App& command, RuleEditOptions& rule) {
    addTexts(command, rule.texts);
    addNumber(command, "--match-type", rule.matchType, "How its conditions are matched: 0 by sender and receiver", 0,
              INT32_MAX);
    addDangling(command, rule, "Only warn of conditions that name no list");
    command.add_flag("--allow-uncovered", rule.allowsUncovered,
                     "Only warn of conditions that no condition of the rule above covers");
}

}  // namespace

void EditCommands::addTo(CLI::App& app, const OnCall& onCall) {
    _onCall = onCall;
    addTree(app);
    addRule(app);
    addTask(app);
    addClassification(app);
    addDiff(app);
}

void EditCommands::addTree(CLI::App& app) {
    CLI::App& command = *app.add_subcommand("tree", "Show the rules as a tree, with conditions, tasks and marks");
    command.add_option("PATH", _show.path, "The rule to begin at (default the root rule)");
    addReport(command, _show.format);
    _onCall(command, [this](const std::string& store) {
        _show.store = store;
        return runTree(_show, reportOutput(_show.format)), kSuccess;
    });
}

void EditCommands::addShow(CLI::App& group, const std::string& what, const char* pathHelp, RunShow run) {
    CLI::App& command = *group.add_subcommand("show", "Show one " + what);
    command.add_option("PATH", _show.path, pathHelp)->required();
    addReport(command, _show.format);
    _onCall(command, [this, run](const std::string& store) {
        _show.store = store;
        return run(_show, reportOutput(_show.format)), kSuccess;
    });
}

// ---- rules ----------------------------------------------------------------------------------------------

void EditCommands::addRule(CLI::App& app) {
    CLI::App& rule = addGroup(app, "rule", "Look at one rule, and change it");
    addShow(rule, "rule", kRuleHelp, runRuleShow);

    CLI::App& add = addRuleEdit(rule, "add", "Add a rule", runRuleAdd);
    addEach(add, "--condition", _rule.conditions, "A condition; list names stand in parentheses", "SENDER,RECEIVER");
    addEach(add, "--inactivate", _rule.inactivated, "Mark a task as inactive for it, by the full name", "TASK");
    addRuleContents(add, _rule);
    addPosition(add, _rule.position);

    CLI::App& set = addRuleEdit(rule, "set", "Change a rule", runRuleSet);
    addEach(set, "--add-condition", _rule.conditions, "Add a condition", "SENDER,RECEIVER");
    addEach(set, "--remove-condition", _rule.removedConditions, "Remove a condition", "SENDER,RECEIVER");
    addEach(set, "--inactivate", _rule.inactivated, "Mark a task as inactive for it, by the full name", "TASK");
    addEach(set, "--activate", _rule.activated, "Take such a mark back", "TASK");
    addRuleContents(set, _rule);

    addPosition(addRuleEdit(rule, "move", "Move a rule among its siblings", runRuleMove), _rule.position)->required();
    addRuleEdit(rule, "remove", "Remove a rule", runRuleRemove)
        .add_flag("--recursive", _rule.isRecursive, "With the rules below it");
}

CLI::App& EditCommands::addRuleEdit(CLI::App& rule, const char* name, const char* help, RunRuleEdit run) {
    CLI::App& command = *rule.add_subcommand(name, help);
    command.add_option("PATH", _rule.path, kRuleHelp)->required();
    addEditOptions(command, _rule);
    _onCall(command, [this, run](const std::string& store) {
        _rule.store = store;
        return run(_rule, reportOutput(_rule.format), std::cerr), kSuccess;
    });
    return command;
}

// ---- tasks ----------------------------------------------------------------------------------------------

void EditCommands::addTask(CLI::App& app) {
    CLI::App& task = addGroup(app, "task", "Look at one task, and change it");
    addShow(task, "task", kTaskHelp, runTaskShow);
    CLI::App& add = addTaskEdit(task, "add", "Add a task to a rule", runTaskAdd);
    addTaskAttributes(add);
    addPosition(add, _task.position);
    CLI::App& set = addTaskEdit(task, "set", "Change a task", runTaskSet);
    addTaskAttributes(set);
    addEach(set, "--remove-outcome", _task.removedOutcomes, "Remove an outcome", "NAME");
    addEach(set, "--remove-setting", _task.settings.removed, "Remove a setting, and what is below it", "NAME");
    addPosition(addTaskEdit(task, "move", "Move a task among those of its rule", runTaskMove), _task.position)
        ->required();
    addTaskEdit(task, "remove", "Remove a task, with the inactive marks for it", runTaskRemove);
}

CLI::App& EditCommands::addTaskEdit(CLI::App& task, const char* name, const char* help, RunTaskEdit run) {
    CLI::App& command = *task.add_subcommand(name, help);
    command.add_option("PATH", _task.path, kTaskHelp)->required();
    addEditOptions(command, _task);
    _onCall(command, [this, run](const std::string& store) {
        _task.store = store;
        return run(_task, reportOutput(_task.format), std::cerr), kSuccess;
    });
    return command;
}

void EditCommands::addTaskAttributes(CLI::App& command) {
    addTexts(command, _task.texts);
    addNumber(command, "--filter", _task.filter, "The filter type");
    addWord(command, "--enable", _task.enable, kTruths, "Whether it is on");
    addWord(command, "--overridable", _task.overridable, kTruths, "Whether rules below may switch it off");
    addEach(command, "--outcome", _task.outcomes, "Set an outcome", "NAME=TEXT");
    addSettings(command, _task.settings);
}

// ---- classifications ------------------------------------------------------------------------------------

void EditCommands::addClassification(CLI::App& app) {
    CLI::App& classification =
        addGroup(app, "classification", "Look at classifications and their actions, and change them");
    addClassificationShow(classification);
    CLI::App& add =
        addClassificationEdit(classification, "add", "Add a classification, or an action to one", runClassificationAdd);
    addClassificationAttributes(add);
    addPosition(add, _classification.position);
    CLI::App& set =
        addClassificationEdit(classification, "set", "Change a classification or an action", runClassificationSet);
    addClassificationAttributes(set);
    addEach(set, "--remove-setting", _classification.settings.removed, "Remove a setting of an action", "NAME");
    addPosition(addClassificationEdit(classification, "move", "Move an action among those of its classification",
                                      runClassificationMove),
                _classification.position)
        ->required();
    CLI::App& remove = addClassificationEdit(classification, "remove", "Remove a classification or an action",
                                             runClassificationRemove);
    addDangling(remove, _classification, "Remove it also when outcomes name it");
}

void EditCommands::addClassificationShow(CLI::App& classification) {
    CLI::App& command = *classification.add_subcommand("show", "Show a classification; without a name, all of them");
    const auto set = [this](const std::string& name) { _classificationShow.name = name; };
    command.add_option_function<std::string>("NAME", set, "The classification, or CLASSIFICATION\\ACTION");
    addReport(command, _classificationShow.format);
    _onCall(command, [this](const std::string& store) {
        _classificationShow.store = store;
        return runClassificationShow(_classificationShow, reportOutput(_classificationShow.format)), kSuccess;
    });
}

CLI::App& EditCommands::addClassificationEdit(CLI::App& classification, const char* name, const char* help,
                                              RunClassificationEdit run) {
    CLI::App& command = *classification.add_subcommand(name, help);
    command.add_option("NAME", _classification.name, "The classification, or CLASSIFICATION\\ACTION")->required();
    addEditOptions(command, _classification);
    _onCall(command, [this, run](const std::string& store) {
        _classification.store = store;
        return run(_classification, reportOutput(_classification.format), std::cerr), kSuccess;
    });
    return command;
}

void EditCommands::addClassificationAttributes(CLI::App& command) {
    addTexts(command, _classification.texts);
    addNumber(command, "--action-type", _classification.actionType, "The type of an action");
    addSettings(command, _classification.settings);
}

// ---- comparing ------------------------------------------------------------------------------------------

void EditCommands::addDiff(CLI::App& app) {
    CLI::App& command = *app.add_subcommand("diff", "Say how one policy differs from another");
    command.add_option("A", _diff.before, "A store's location, or a policy file")->required();
    command.add_option("B", _diff.after, "The other one")->required();
    CLI::Option* decisions = command.add_flag("--decisions", _comparesDecisions,
                                              "Compare the rules and tasks that mails get, of all mails there are");
    addMatchOptions(command, _diff.match);
    command.get_option("--best")->needs(decisions);
    addNumber(command, "--samples", _diff.samples,
              "How many of the addresses of each list, or of the kinds of mails of each change, to show (default 5)");
    addReport(command, _diff.format);
    command.footer("Exit status: 0 they are the same, 1 they differ.");
    _onCall(command, [this](const std::string&) -> ExitStatus {
        return _comparesDecisions ? runDiffDecisions(_diff, reportOutput(_diff.format), std::cerr)
                                  : runDiff(_diff, reportOutput(_diff.format));
    });
}

}  // namespace tool
