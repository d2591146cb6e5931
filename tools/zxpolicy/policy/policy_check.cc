#include "policy/policy_check.h"

#include "output/text.h"

namespace tool {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

std::string sideFault(std::string_view side) {
    if (side.empty()) return "is empty; * stands for every address";
    if (isBlank(side.front()) || isBlank(side.back())) return "begins or ends with a blank";
    return textFault(side, kMaxAddress);
}

}  // namespace

std::string nameFault(std::string_view name) {
    if (name.empty()) return "is empty";
    if (name.find('\\') != std::string_view::npos) return "contains a backslash, which separates the names in a path";
    return textFault(name, kMaxName);
}

std::string textFault(std::string_view text, size_t most) {
    if (text.find('\0') != std::string_view::npos) return "contains a NUL byte";
    if (text.size() > most) return "is longer than " + std::to_string(most) + " bytes";
    return "";
}

std::string senderFault(std::string_view sender) {
    if (sender.find(',') != std::string_view::npos) return "contains a comma";
    return sideFault(sender);
}

std::string receiverFault(std::string_view receiver) {
    return sideFault(receiver);
}

std::string markFault(std::string_view task) {
    if (task.empty()) return "is empty; it is a task's full name such as \\Sales\\scan";
    return textFault(task, kMaxName);
}

std::string markKey(std::string_view task) {
    if (!task.empty() && task.back() == '\\') task.remove_suffix(1);
    return lowerCase(task);
}

}  // namespace tool
