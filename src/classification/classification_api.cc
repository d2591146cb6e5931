// The flat functions on classifications and their actions.
#include "classification/action.h"
#include "classification/class_hive.h"
#include "classification/classification.h"
#include "frame/frame.h"

using namespace zxpol;

// ---- the hive -------------------------------------------------------------------------------------------------

_ZxPolComHandle* zxpol_openClassificationHive(_ZxPolComHandle* key, int* error) {
    return frame::openHive<ZxPolClassHive>(
        key, error, [&](_ZxPolComHandle* storeKey) { return ZxPolClassHive::open(storeKey, error); });
}

void zxpol_closeClassificationHive(_ZxPolComHandle* hive, int* error) {
    frame::close<ZxPolClassHive>(hive, error);
}

_ZxPolComHandle* zxpol_createClassification(_ZxPolComHandle* hive, const char* name, const _ZxPolCommAttrib* attr,
                                            int* error) {
    return frame::open<ZxPolClassHive, ZxPolClass>(
        hive, error, [&](ZxPolClassHive& classes) { return classes.createClassification(name, attr, error); });
}

_ZxPolComHandle* zxpol_openClassification(_ZxPolComHandle* hive, const char* name, int* error) {
    return frame::open<ZxPolClassHive, ZxPolClass>(
        hive, error, [&](ZxPolClassHive& classes) { return classes.openClassification(name, error); });
}

void zxpol_deleteClassification(_ZxPolComHandle* hive, const char* name, int* error) {
    frame::call<ZxPolClassHive>(hive, error,
                                [&](ZxPolClassHive& classes) { classes.deleteClassification(name, error); });
}

void zxpol_enumClassification(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolClassHive>(
        hive, error, [&](ZxPolClassHive& classes) { classes.enumClassification(index, buffer, size, error); });
}

// ---- classifications --------------------------------------------------------------------------------------------

void zxpol_closeClassification(_ZxPolComHandle* classification, int* error) {
    frame::close<ZxPolClass>(classification, error);
}

void zxpol_getClassificationAttrib(_ZxPolComHandle* classification, _ZxPolCommAttrib* attr, int* error) {
    frame::call<ZxPolClass>(classification, error, [&](ZxPolClass& owner) { owner.getAttribute(attr, error); });
}

void zxpol_setClassificationAttrib(_ZxPolComHandle* classification, const _ZxPolCommAttrib* attr, int* error) {
    frame::call<ZxPolClass>(classification, error, [&](ZxPolClass& owner) { owner.setAttribute(attr, error); });
}

_ZxPolComHandle* zxpol_createAction(_ZxPolComHandle* classification, const char* name, const _ZxPolActionAttr* attr,
                                    int* error) {
    return frame::open<ZxPolClass, ZxPolAction>(
        classification, error, [&](ZxPolClass& owner) { return owner.createAction(name, attr, error); });
}

_ZxPolComHandle* zxpol_openAction(_ZxPolComHandle* classification, const char* name, int* error) {
    return frame::open<ZxPolClass, ZxPolAction>(classification, error,
                                                [&](ZxPolClass& owner) { return owner.openAction(name, error); });
}

void zxpol_deleteAction(_ZxPolComHandle* classification, const char* name, int* error) {
    frame::call<ZxPolClass>(classification, error, [&](ZxPolClass& owner) { owner.deleteAction(name, error); });
}

void zxpol_enumAction(_ZxPolComHandle* classification, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolClass>(classification, error,
                            [&](ZxPolClass& owner) { owner.enumAction(index, buffer, size, error); });
}

uint32_t zxpol_setActionOrder(_ZxPolComHandle* classification, const char* name, uint32_t position, int* error) {
    return frame::call<ZxPolClass>(classification, error,
                                   [&](ZxPolClass& owner) { return owner.setActionOrder(name, position, error); });
}

// ---- actions ----------------------------------------------------------------------------------------------------

void zxpol_closeAction(_ZxPolComHandle* action, int* error) {
    frame::close<ZxPolAction>(action, error);
}

void zxpol_getActionAttrib(_ZxPolComHandle* action, _ZxPolActionAttr* attr, int* error) {
    frame::call<ZxPolAction>(action, error, [&](ZxPolAction& owner) { owner.getAttribute(attr, error); });
}

void zxpol_setActionAttrib(_ZxPolComHandle* action, const _ZxPolActionAttr* attr, int* error) {
    frame::call<ZxPolAction>(action, error, [&](ZxPolAction& owner) { owner.setAttribute(attr, error); });
}
