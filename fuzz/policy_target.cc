// Policy files: read, written, applied to a store, dumped and applied again. An input is up to three files, parted by
// form feeds, applied to one store after the other.
#include <optional>
#include <string>

#include "bytes.h"
#include "fail.h"
#include "policy/policy_reader.h"
#include "policy/policy_references.h"
#include "policy/policy_writer.h"
#include "policy_checks.h"

namespace {

constexpr int kMostFiles = 3;

std::optional<tool::Policy> policyIn(const std::string& text) {
    try {
        return tool::readPolicy("p", text);
    } catch (const tool::PolicyError& error) {
        fuzz::requireOneLine(error);
        return std::nullopt;
    }
}

void checkText(const tool::Policy& policy) {
    const std::string text = tool::writePolicy(policy);
    const tool::Policy again = tool::readPolicy("p", text);
    fuzz::requireSamePolicy(policy, again, "written and read");
    fuzz::requireSame(text, tool::writePolicy(again), "written twice");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    const tool::Store store("memory:", tool::Store::Missing::Create);
    for (int files = 0; !bytes.isEmpty() && files < kMostFiles; ++files) {
        const std::optional<tool::Policy> policy = policyIn(bytes.until('\f'));
        if (!policy) continue;
        tool::findReferenceFaults(tool::YamlSource("p"), *policy);
        checkText(*policy);
        const bool isTaken = fuzz::apply(store, *policy, true);
        fuzz::requireSame(isTaken, fuzz::apply(store, *policy), "a dry run has another result");
        if (isTaken) fuzz::checkStored(store, *policy);
        fuzz::forgetLists(*policy);
    }
    return 0;
}
