// The keys that may stand in the maps of a policy file.
#pragma once

#include <vector>

namespace tool {

using Keys = std::vector<const char*>;

inline const Keys kFileKeys{"zxpolicy", "lists", "classifications", "exclusiveFilters", "root"};
inline const Keys kListKeys{"name",       "type",           "addresses",  "displayName", "comment",  "server", "port",
                            "searchroot", "authentication", "schematype", "username",    "password", "filter"};
inline const Keys kDirectoryKeys{"server",     "port",     "searchroot", "authentication",
                                 "schematype", "username", "password",   "filter"};
inline const Keys kClassificationKeys{"name", "displayName", "comment", "actions"};
inline const Keys kActionKeys{"name", "displayName", "comment", "actionType", "setting"};
inline const Keys kExclusiveFilterKeys{"filter", "priority"};
inline const Keys kRootKeys{"displayName", "comment", "matchType", "conditions", "inactive", "tasks", "rules"};
inline const Keys kRuleKeys{"name", "displayName", "comment", "matchType", "conditions", "inactive", "tasks", "rules"};
inline const Keys kConditionKeys{"sender", "receiver"};
inline const Keys kTaskKeys{"name", "displayName", "comment", "filter", "enable", "overridable", "outcomes", "setting"};

}  // namespace tool
