// The flat functions on tasks, inactive marks and outcomes.
#include "frame/frame.h"
#include "rules/rule.h"
#include "rules/task.h"

using namespace zxpol;

_ZxPolComHandle* zxpol_createTask(_ZxPolComHandle* rule, const char* name, _ZxPolTaskAttr* attr, int* error) {
    return frame::open<ZxPolRule, ZxPolTask>(rule, error,
                                             [&](ZxPolRule& object) { return object.createTask(name, attr, error); });
}

_ZxPolComHandle* zxpol_openTask(_ZxPolComHandle* rule, const char* name, int* error) {
    return frame::open<ZxPolRule, ZxPolTask>(rule, error,
                                             [&](ZxPolRule& object) { return object.openTask(name, error); });
}

void zxpol_closeTask(_ZxPolComHandle* task, int* error) {
    frame::close<ZxPolTask>(task, error);
}

void zxpol_deleteTask(_ZxPolComHandle* rule, const char* name, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.deleteTask(name, error); });
}

void zxpol_enumTask(_ZxPolComHandle* rule, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.enumTask(index, buffer, size, error); });
}

void zxpol_setTaskOrder(_ZxPolComHandle* rule, const char* name, uint32_t position, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.setTaskOrder(name, position, error); });
}

void zxpol_getTaskAttrib(_ZxPolComHandle* task, _ZxPolTaskAttr* attr, int* error) {
    frame::call<ZxPolTask>(task, error, [&](ZxPolTask& object) { object.getAttribute(attr, error); });
}

void zxpol_setTaskAttrib(_ZxPolComHandle* task, const _ZxPolTaskAttr* attr, int* error) {
    frame::call<ZxPolTask>(task, error, [&](ZxPolTask& object) { object.setAttribute(attr, error); });
}

void zxpol_inactivateTask(_ZxPolComHandle* rule, const char* taskFullName, int activate, int* error) {
    frame::call<ZxPolRule>(rule, error,
                           [&](ZxPolRule& object) { object.inactivateTask(taskFullName, error, activate); });
}

int zxpol_isTaskActive(_ZxPolComHandle* rule, const char* taskFullName, int* error) {
    return frame::call<ZxPolRule>(
        rule, error, [&](ZxPolRule& object) { return object.isTaskActive(taskFullName, error, nullptr) ? 1 : 0; });
}

void zxpol_getOutcome(_ZxPolComHandle* task, const char* name, char* value, uint32_t* size, int* error) {
    frame::call<ZxPolTask>(task, error, [&](ZxPolTask& object) { object.getOutcome(name, value, size, error); });
}

void zxpol_addOutcome(_ZxPolComHandle* task, const char* name, const char* value, int* error) {
    frame::call<ZxPolTask>(task, error, [&](ZxPolTask& object) { object.addOutcome(name, value, error); });
}

void zxpol_deleteOutcome(_ZxPolComHandle* task, const char* name, int* error) {
    frame::call<ZxPolTask>(task, error, [&](ZxPolTask& object) { object.deleteOutcome(name, error); });
}

void zxpol_enumOutcome(_ZxPolComHandle* task, uint32_t index, char* name, uint32_t* nameSize, char* value,
                       uint32_t* valueSize, int* error) {
    frame::call<ZxPolTask>(
        task, error, [&](ZxPolTask& object) { object.enumOutcome(index, name, nameSize, value, valueSize, error); });
}
