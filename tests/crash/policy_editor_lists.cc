// The edits of address lists and classifications.
#include <fstream>

#include "crash/policy_editor.h"
#include "support/records.h"

namespace crash {

using model::RandomSource;
using zxtest::Handle;

namespace {

const std::vector<std::string> listNames{"staff", "guests"};
const std::vector<std::string> classNames{"spam", "bulk"};

std::string addressFile(const std::string& folder, size_t number) {
    return folder + "/addresses" + std::to_string(number);
}

std::string anyAddress(RandomSource& random) {
    const std::string number = std::to_string(random.below(60));
    return random.inPercent(10) ? "*@host" + number + ".net" : "a" + number + "@example.com";
}

}  // namespace

int PolicyEditor::editLists(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const std::string name = random.pick(listNames);
    const size_t kind = random.below(10);
    if (kind < 5) {
        const _ZxPolAddrListAttr attr = zxtest::normalAttr(anyText(random));
        const Handle made(zxpol_createAddrList(_lists.get(), name.c_str(), &attr, &error));
    } else if (kind < 7) {
        const _ZxPolAddrListAttr attr = zxtest::directoryAttr(anyText(random));
        const Handle made(zxpol_createAddrList(_lists.get(), "directory", &attr, &error));
    } else if (kind < 8) {
        const _ZxPolAddrListAttr attr = zxtest::directoryAttr(anyText(random));
        const Handle opened(zxpol_openAddrList(_lists.get(), "directory", &error));
        zxpol_setAddrListAttrib(opened.get(), &attr, &error);
    } else {
        zxpol_deleteAddrList(_lists.get(), kind == 8 ? "directory" : name.c_str(), &error);
    }
    return error;
}

int PolicyEditor::editAddresses(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const Handle list(zxpol_openAddrList(_lists.get(), random.pick(listNames).c_str(), &error));
    std::vector<std::string> addresses(random.between(1, 12));
    std::vector<const char*> array;
    for (std::string& address : addresses)
        array.push_back((address = anyAddress(random)).c_str());
    array.push_back(nullptr);
    if (random.inPercent(60)) {
        zxpol_insertAddress(list.get(), array.data(), &error);
    } else {
        zxpol_removeAddress(list.get(), array.data(), &error);
    }
    return error;
}

int PolicyEditor::importList(RandomSource& random) {
    const std::string name = random.pick(listNames);
    const size_t file = random.below(random.inPercent(20) ? 4 : 3);
    return importAddresses(name, file, random.inPercent(80));
}

int PolicyEditor::importAddresses(const std::string& list, size_t file, bool isReplacing) {
    int error = ZXPOL_S_OK;
    const Handle opened(zxpol_openAddrList(_lists.get(), list.c_str(), &error));
    zxpol_importAddress(opened.get(), 0, isReplacing ? 1 : 0, addressFile(_folder, file).c_str(), &error);
    return error;
}

int PolicyEditor::editClassifications(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const std::string name = random.pick(classNames);
    const auto number = static_cast<uint32_t>(random.between(1, 4));
    const std::string action = "action" + std::to_string(random.below(3));
    const size_t kind = random.below(10);
    if (kind < 4) {
        const _ZxPolCommAttrib attr = zxtest::commonAttr(anyText(random));
        const Handle made(zxpol_createClassification(_classes.get(), name.c_str(), &attr, &error));
        return error;
    }
    if (kind == 4) {
        zxpol_deleteClassification(_classes.get(), name.c_str(), &error);
        return error;
    }
    const Handle owner(zxpol_openClassification(_classes.get(), name.c_str(), &error));
    if (kind < 7) {
        const _ZxPolActionAttr attr = zxtest::actionAttr(anyText(random), number, number - 1);
        const Handle made(zxpol_createAction(owner.get(), action.c_str(), &attr, &error));
    } else if (kind < 9) {
        zxpol_setActionOrder(owner.get(), action.c_str(), number, &error);
    } else {
        zxpol_deleteAction(owner.get(), action.c_str(), &error);
    }
    return error;
}

void writeAddressFiles(const std::string& folder) {
    size_t number = 0;
    for (const int lines : {3, 40, 400, 4000}) {
        std::ofstream file(addressFile(folder, number++));
        for (int line = 0; line < lines; ++line)
            file << "a" << line * 7 % 4001 << "@example.com\n";
    }
}

}  // namespace crash
