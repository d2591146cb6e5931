// The commands that change classifications and their actions. An action is named CLASSIFICATION\ACTION.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "change/edit_parts.h"
#include "change/policy_edit.h"

namespace tool {

struct ClassificationEditOptions : EditOptions {
    std::string name;
    TextEdit texts;
    std::optional<uint32_t> actionType;  // this and what follows: of an action only
    SettingEdit settings;
    std::optional<uint32_t> position;
};

// Each runs a command, with its report to `out`. All throw a ToolError, and then nothing was changed.

void runClassificationAdd(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err);
void runClassificationSet(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err);
// Of an action: classifications have no order.
void runClassificationMove(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err);
void runClassificationRemove(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
