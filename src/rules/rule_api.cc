// The flat functions on rules.
#include "frame/frame.h"
#include "rules/rule.h"

using namespace zxpol;

_ZxPolComHandle* zxpol_createRule(_ZxPolComHandle* parent, const char* name, _ZxPolRuleAttr* attr,
                                  const unsigned char** conditions, int* error) {
    // Missing conditions count like a missing handle, before the handle's kind does.
    return frame::open<ZxPolRule, ZxPolRule>(conditions == nullptr ? nullptr : parent, error, [&](ZxPolRule& rule) {
        return rule.createChildRule(name, attr, conditions, error);
    });
}

_ZxPolComHandle* zxpol_openRule(_ZxPolComHandle* parent, const char* name, int* error) {
    return frame::open<ZxPolRule, ZxPolRule>(parent, error,
                                             [&](ZxPolRule& rule) { return rule.openChildRule(name, error); });
}

void zxpol_closeRule(_ZxPolComHandle* rule, int* error) {
    frame::close<ZxPolRule>(rule, error);
}

void zxpol_deleteRule(_ZxPolComHandle* parent, const char* name, int* error) {
    frame::call<ZxPolRule>(parent, error, [&](ZxPolRule& rule) { rule.deleteChildRule(name, error); });
}

void zxpol_enumRule(_ZxPolComHandle* parent, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolRule>(parent, error, [&](ZxPolRule& rule) { rule.enumChildRule(index, buffer, size, error); });
}

void zxpol_getRuleAttrib(_ZxPolComHandle* rule, _ZxPolRuleAttr* attr, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.getAttribute(attr, error); });
}

void zxpol_setRuleAttrib(_ZxPolComHandle* rule, const _ZxPolRuleAttr* attr, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.setAttribute(attr, error); });
}

void zxpol_setRuleOrder(_ZxPolComHandle* parent, const char* name, uint32_t position, int* error) {
    frame::call<ZxPolRule>(parent, error, [&](ZxPolRule& rule) { rule.setChildRuleOrder(name, position, error); });
}
