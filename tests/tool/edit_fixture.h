// Changes of a policy as users make them, each done dry first.
#pragma once

#include <string>
#include <vector>

#include "tool_fixture.h"

namespace tool {

class EditTest : public ToolTest {
protected:
    // Applies a policy with everything that there is to change.
    EditTest();

    // The policy that was applied, as it is and with one text in it replaced by another.
    static const std::string& policy();
    static std::string policyWith(const std::string& before, const std::string& after);

    // Makes a change: dry as text and as JSON, which must change nothing, then as text for real. All three must
    // report the same, and diff must find the same. Returns the report of the last one as text, without the line of
    // numbers.
    std::string change(const std::vector<std::string>& arguments);

    // Asks for a change that must be refused in one line with this status, and leave everything as it was. Returns the
    // line.
    std::string refuse(const std::vector<std::string>& arguments, int status = 3);

    // Whether the store holds exactly this policy.
    bool holds(const std::string& policy);

    // What the last change said on standard error.
    std::string err;
};

}  // namespace tool
