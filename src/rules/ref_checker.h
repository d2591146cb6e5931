// ZxPolRefChecker: finds a rule that refers to an address list or a classification.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "zxpolicy.h"

class ZxPolRule;
class ZxPolRuleHive;

/**
 * Answers whether anything in the rule tree still refers to a list or a classification, as asked before it is deleted.
 *
 * A rule refers to an address list when a side of one of its conditions begins with "(", is longer than 2 characters,
 * and is the list's name between its first and its last character, and to a classification when the text of an outcome
 * of one of its tasks is the classification's name; letter case is ignored in both.
 *
 * Invariant: the checker owns the hive that it reads, or has none, when there was no memory for it. Nothing is cached:
 * each question walks the tree anew. What cannot be opened or read on the way counts as no reference. One thread at a
 * time.
 */
class ZXPOL_API ZxPolRefChecker {
public:
    /// Takes `hiveKey`, the rule hive's key, over in any case. *err (may be null) becomes ZXPOL_S_OK, or
    /// ZXPOL_E_OUT_OF_MEMORY; then every question is answered with that failure.
    ZxPolRefChecker(_ZxPolComHandle* hiveKey, int* err);
    ~ZxPolRefChecker();
    ZxPolRefChecker(const ZxPolRefChecker&) = delete;
    ZxPolRefChecker& operator=(const ZxPolRefChecker&) = delete;

    /// Whether a rule refers to the entity `name`; an unknown kind of entity has no references. The full path of the
    /// first such rule, children in their order before their parent, goes to `path`, and its length with NUL to *size,
    /// which must have been greater than that: ZXPOL_E_BUFFER_TOO_SMALL else, and the answer is true all the same.
    /// Without a reference both are untouched. ZXPOL_E_INVALID_ARG and false: null name, path or size. The failure of
    /// opening the root rule is reported.
    bool checkReference(ZxPolRefEntity entity, const char* name, char* path, uint32_t* size, int* err);

private:
    using _Test = bool (ZxPolRefChecker::*)(ZxPolRule* rule, const char* name);

    // How references to one kind of entity are recognised in a rule.
    struct _CheckHandler {
        ZxPolRefEntity entity;
        _Test test;
    };

    bool _find(ZxPolRule* root, ZxPolRefEntity entity, const char* name, std::string& foundPath);
    bool _checkInRule(ZxPolRule* rule, const char* rulePath, const char* name, _Test test, std::string& foundPath);
    bool _checkAddrInRule(ZxPolRule* rule, const char* name);
    bool _checkClassInRule(ZxPolRule* rule, const char* name);

    std::unique_ptr<ZxPolRuleHive> _hive;
    std::list<_CheckHandler> _handlers;
};
