// What the scenarios' calls report when the store does not fail.
#include <map>

#include "fault/scenario.h"

namespace zxtest {

namespace {

using Names = std::vector<std::string>;

const std::map<int, Names>& refusals() {
    static const std::map<int, Names> all = {
        {ZXPOL_E_NOT_SUPPORTED,
         {"OpenRuleHiveOfAnotherType", "EnumConditionOfAnotherMatchType", "AddConditionOfAnotherMatchType"}},
        {ZXPOL_E_EXCEPTION, {"SetRuleOrderOfARuleWithoutPosition"}},
        {ZXPOL_E_BUFFER_TOO_SMALL, {"MapToUnicodeIntoATooSmallBuffer", "GetOutcomeIntoATooSmallBuffer"}},
        {ZXPOL_E_INVALID_ARG, {"CreateAddrListOfAnUnknownType"}},
        {ZXPOL_E_CONVERSION, {"MapToUnicodeOfAMalformedText"}},
        {ZXPOL_E_FILE_OPEN, {"ImportFromAFileThatIsMissing"}},
        {ZXPOL_E_ALREADY_EXISTS, {"UpdateConditionToOneThatExists"}},
        {ZXPOL_E_CONDITION_CHECK,
         {"CreateRuleThatIsNotCovered", "AddConditionsNotCovered", "UpdateConditionThatIsNotCovered"}},
        {ZXPOL_E_VERSION,
         {"OpenRuleHiveOfANewerStore", "OpenClassificationHiveOfANewerStore", "OpenAddrListHiveOfANewerStore",
          "CheckReferencesOfANewerStore"}},
        {ZXPOL_E_INVALID_FORMAT,
         {"CreateRuleWithAnInvalidCondition", "AddConditionsOneInvalid", "ReplaceConditionsSomeInvalid",
          "InsertAddressesSomeInvalid", "ImportSomeInvalid", "ImportNothingReplacing"}},
        {ZXPOL_E_NOT_FOUND,
         {"RemoveConditionThatIsMissing",
          "RemoveConditionAndMissOne",
          "RemoveAddressThatIsMissing",
          "RemoveAddressAndMissOne",
          "RemoveAddressOfNone",
          "OpenRuleByFullNameThatIsMissing",
          "OpenRootRuleThatIsMissing",
          "OpenRuleThatIsMissing",
          "DeleteRuleThatIsMissing",
          "SetRuleOrderOfAMissingRule",
          "GetRuleAttribWithoutComment",
          "RemoveExclusiveFilterTypeThatIsMissing",
          "OpenTaskThatIsMissing",
          "DeleteTaskThatIsMissing",
          "SetTaskOrderOfAMissingTask",
          "InactivateTaskWithoutAPlace",
          "IsTaskActiveWithoutAPlace",
          "GetOutcomeThatIsMissing",
          "DeleteOutcomeThatIsMissing",
          "GetTaskAttribWithoutSetting",
          "OpenAddrListThatIsMissing",
          "DeleteAddrListThatIsMissing",
          "CheckReferencesOfAnEmptyStore",
          "OpenClassificationThatIsMissing",
          "DeleteClassificationThatIsMissing",
          "OpenActionThatIsMissing",
          "DeleteActionThatIsMissing",
          "SetActionOrderOfAMissingAction"}},
    };
    return all;
}

}  // namespace

int resultOfCleanRun(const Scenario& scenario) {
    for (const auto& [result, names] : refusals()) {
        for (const std::string& name : names) {
            if (name == scenario.name) return result;
        }
    }
    return ZXPOL_S_OK;
}

}  // namespace zxtest
