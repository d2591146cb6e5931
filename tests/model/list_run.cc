#include "model/list_run.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"

namespace model {
namespace {

using zxtest::codeText;

constexpr const char* kName = "List";

void expectSuccess(int code, const char* what) {
    EXPECT_GE(code, 0) << what << ": " << codeText(code);
}

// An array as the interface takes it.
class Array {
public:
    explicit Array(const Addresses& addresses) {
        for (const std::string& address : addresses)
            _texts.push_back(address.c_str());
        _texts.push_back(nullptr);
    }
    const char** get() { return _texts.data(); }

private:
    std::vector<const char*> _texts;
};

// A file with a text, in memory, gone with the object.
class TextFile {
public:
    explicit TextFile(const std::string& text) : _file(memfd_create("import", MFD_CLOEXEC)) {
        EXPECT_EQ(static_cast<ssize_t>(text.size()), write(_file, text.data(), text.size()));
    }
    ~TextFile() { close(_file); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(_file); }

private:
    const int _file;
};

std::string difference(const std::string& what, const std::string& expected, const std::string& found) {
    return expected == found ? "" : what + ": expected " + expected + ", found " + found;
}

}  // namespace

ListRun::ListRun(_ZxPolComHandle* store) : _store(store) {
    int error = ZXPOL_S_OK;
    _flatHive.reset(zxpol_openAddrListHive(store, &error));
    expectSuccess(error, "opening the hive");
    _hive.reset(ZxPolAddrListHive::open(store, &error));
    expectSuccess(error, "opening the hive's object");
    create();
}

ListRun::~ListRun() {
    remove();
}

void ListRun::open(size_t object) {
    int error = ZXPOL_S_OK;
    _lists[object].reset();
    _lists[object].reset(zxpol_openAddrList(_flatHive.get(), kName, &error));
    expectSuccess(error, "opening the list");
}

void ListRun::openAll() {
    int error = ZXPOL_S_OK;
    open(0);
    open(1);
    _matcher.reset(_hive->openAddrList(kName, &error));
    expectSuccess(error, "opening the list's object");
}

void ListRun::create() {
    const _ZxPolAddrListAttr attr = {};
    int error = ZXPOL_S_OK;
    const zxtest::Handle made(zxpol_createAddrList(_flatHive.get(), kName, &attr, &error));
    expectSuccess(error, "creating the list");
    openAll();
}

void ListRun::remove() {
    int error = ZXPOL_S_OK;
    _matcher.reset();
    _lists[0].reset();
    _lists[1].reset();
    zxpol_deleteAddrList(_flatHive.get(), kName, &error);
    expectSuccess(error, "deleting the list");
}

int ListRun::import(const Step& step, _ZxPolComHandle* list) const {
    const TextFile file(step.text);
    int error = ZXPOL_S_OK;
    zxpol_importAddress(list, step.format, step.replace, file.path().c_str(), &error);
    return error;
}

int ListRun::change(const Step& step) {
    _ZxPolComHandle* const list = _lists[step.isBySecondObject ? 1 : 0].get();
    Array array(step.addresses);
    int error = ZXPOL_S_OK;
    if (step.kind == Step::Kind::insert)
        zxpol_insertAddress(list, array.get(), &error);
    else if (step.kind == Step::Kind::remove)
        zxpol_removeAddress(list, array.get(), &error);
    else
        error = import(step, list);
    return error;
}

int ListRun::changeModel(const Step& step) {
    if (step.kind == Step::Kind::insert) return _model.insert(step.addresses);
    if (step.kind == Step::Kind::remove) return _model.remove(step.addresses);
    return _model.importText(step.text, step.format, step.replace);
}

void ListRun::overwrite(const Step& step) const {
    int error = ZXREG_S_OK;
    const zxtest::RawKey key(_store, std::string("AddressList\\") + kName);
    const std::string name = "address" + std::to_string(step.number);
    if (step.text.empty())
        zxreg_deleteValue(key.handle(), name.c_str(), &error);
    else
        zxreg_setValue(key.handle(), name.c_str(), ZXREG_MULTI_STRING, step.text.data(),
                       static_cast<uint32_t>(step.text.size()), &error);
}

// Opens what still answers as before the store was changed: all objects but the one that changed the list since.
void ListRun::reopenStale(const Step& step) {
    if (_model.isOutOfStep()) return refresh();
    if (!_isStale) return;
    int error = ZXPOL_S_OK;
    open(step.isBySecondObject ? 0 : 1);
    _matcher.reset(_hive->openAddrList(kName, &error));
    expectSuccess(error, "opening the list's object");
    _isStale = false;
}

// Has all objects answer as the store is now.
void ListRun::refresh() {
    openAll();
    if (_isStale || _model.isOutOfStep()) _model.fillCache();
    _isStale = false;
}

std::string ListRun::run(const Step& step) {
    std::string found;
    switch (step.kind) {
        case Step::Kind::overwrite:
            overwrite(step);
            _model.setImage(step.number, step.text);
            _isStale = true;
            return "";
        case Step::Kind::reopen:
            refresh();
            break;
        case Step::Kind::recreate:
            remove();
            create();
            _model = ListModel();
            _isStale = false;
            break;
        default:
            // A change of nothing does not look at the list.
            if (_isStale && step.addresses.empty()) refresh();
            if (_isStale) _model.fillCache();
            const int expected = changeModel(step);
            found = difference("result", codeText(expected), codeText(change(step)));
            reopenStale(step);
            break;
    }
    if (found.empty()) found = compareValues();
    if (!found.empty() || step.subjects.empty()) return found;
    found = compareOrders();
    return found.empty() ? compareMatches(step.subjects) : found;
}

// Compares the values in the store byte by byte.
std::string ListRun::compareValues() const {
    const zxtest::RawKey key(_store, std::string("AddressList\\") + kName);
    ListModel::Images images;
    for (uint32_t index = 0;; ++index) {
        char name[256], data[4096];
        uint32_t nameSize = sizeof name, size = sizeof data, type = 0;
        int error = ZXREG_S_OK;
        zxreg_enumValue(key.handle(), index, name, &nameSize, &type, data, &size, &error);
        if (error < 0) break;
        unsigned number = 0;
        if (std::sscanf(name, "address%u", &number) != 1) continue;
        if (type != ZXREG_MULTI_STRING) return std::string(name) + " has type " + std::to_string(type);
        images[number] = std::string(data, size);
    }
    const auto shown = [](const ListModel::Images& values) {
        std::string text;
        for (const auto& [number, image] : values)
            text += std::to_string(number) + ":" + image + " ";
        for (char& c : text)
            c = c == '\0' ? '|' : c;
        return text;
    };
    if (images == _model.images()) return "";
    return "values:\n    expected " + shown(_model.images()) + "\n    found    " + shown(images);
}

std::string ListRun::compareOrders() const {
    std::string found = compareOrder(nullptr, _lists[0].get());
    if (found.empty()) found = compareOrder("user", _lists[1].get());
    if (found.empty()) found = compareOrder("ascending", _lists[0].get());
    if (found.empty()) found = compareOrder("decending", _lists[1].get());
    unsetenv("order");
    return found;
}

std::string ListRun::compareOrder(const char* order, _ZxPolComHandle* list) const {
    if (order == nullptr)
        unsetenv("order");
    else
        setenv("order", order, 1);
    for (uint32_t index = 0; index <= _model.cache().size(); ++index) {
        const std::string found = comparePlace(index, order, list);
        if (!found.empty()) return found;
    }
    return "";
}

std::string ListRun::comparePlace(uint32_t index, const char* order, _ZxPolComHandle* list) const {
    const bool isUser = order == nullptr || std::strcmp(order, "user") == 0;
    const bool isAscending = !isUser && std::strcmp(order, "decending") != 0;
    const std::optional<std::string> expected =
        isUser ? _model.cache().inUserOrder(index) : _model.cache().inAlphaOrder(index, isAscending);
    const bool isTooSmall = index % 7 == 3 && expected;
    char text[4096] = "";
    uint32_t size = isTooSmall ? static_cast<uint32_t>(expected->size()) : sizeof text;
    const uint32_t expectedSize = expected ? static_cast<uint32_t>(expected->size() + 1) : size;
    const int code = !expected ? ZXPOL_E_NO_MORE_ITEMS : isTooSmall ? ZXPOL_E_BUFFER_TOO_SMALL : ZXPOL_S_OK;
    int error = ZXPOL_S_OK;
    zxpol_enumAddress(list, index, text, &size, &error);
    const char* const expectedText = code == ZXPOL_S_OK ? expected->c_str() : "";
    if (error == code && size == expectedSize && std::strcmp(text, expectedText) == 0) return "";
    return "place " + std::to_string(index) + " in order " + (order == nullptr ? "unset" : order) + ": expected " +
           codeText(code) + " " + std::to_string(expectedSize) + " " + expectedText + ", found " + codeText(error) +
           " " + std::to_string(size) + " " + text;
}

std::string ListRun::compareMatches(const Addresses& subjects) const {
    for (const std::string& subject : subjects) {
        for (const ZxPolMatchWeightType kind : {ZXPOL_WEIGHT_DOMAIN_FIRST, ZXPOL_WEIGHT_NAME_FIRST}) {
            std::string found = compareMatch(subject, kind);
            if (found.empty()) found = compareDeciding(subject, kind);
            if (!found.empty()) return found;
        }
    }
    return "";
}

std::string ListRun::compareMatch(const std::string& subject, ZxPolMatchWeightType kind) const {
    uint32_t expectedWeight = 0, weight = 77;
    const bool expected = _model.cache().matchList(subject, expectedWeight, kind);
    int error = ZXPOL_S_OK;
    const bool found = _matcher->matchAddress(subject.c_str(), &weight, kind, &error);
    const bool isSame = found == expected && weight == expectedWeight;
    if (isSame && _matcher->matchAddress(subject.c_str(), nullptr, kind, &error) == expected) return "";
    const auto shown = [](bool isMatch, uint32_t value) {
        return std::string(isMatch ? "match" : "no match") + " of weight " + std::to_string(value);
    };
    return "matching " + subject + " kind " + std::to_string(kind) + ": expected " + shown(expected, expectedWeight) +
           ", found " + shown(found, weight) + (isSame ? ", and another answer without a weight" : "");
}

// The entry that is said to decide must be one that has the weight of the match.
std::string ListRun::compareDeciding(const std::string& subject, ZxPolMatchWeightType kind) const {
    const auto* list = dynamic_cast<const ZxPolNormalAddrList*>(_matcher.get());
    if (list == nullptr) return "the list is of another class";
    uint32_t weight = 0;
    const bool isMatch = _model.cache().matchList(subject, weight, kind);
    const std::string entry = list->findMatch(subject.c_str(), kind);
    if (isDeciding(entry, subject, isMatch, weight, kind)) return "";
    return "deciding about " + subject + " kind " + std::to_string(kind) + ": " + entry;
}

bool ListRun::isDeciding(const std::string& entry, const std::string& subject, bool isMatch, uint32_t weight,
                         ZxPolMatchWeightType kind) const {
    if (!isMatch) return entry.empty();
    if (_model.cache().find(subject, ZxPolAddrCache::ExactList))
        return compareFolded(sortKeyOf(entry), sortKeyOf(subject)) == 0;
    ZxPolCondWildcardPattern pattern(entry.c_str());
    return _model.cache().find(entry, ZxPolAddrCache::WildCardList) && pattern == subject.c_str() &&
           ZxPolPriority::calcWeight(pattern, kind) == weight;
}

std::string runSequence(_ZxPolComHandle* store, const Sequence& sequence) {
    ListRun run(store);
    for (size_t i = 0; i < sequence.size(); ++i) {
        const std::string found = run.run(sequence[i]);
        if (!found.empty()) return "step " + std::to_string(i + 1) + ": " + found;
    }
    return "";
}

namespace {

// Leaves out parts of what `items` finds in a sequence, as long as something differs.
template <class Items>
void leaveOut(_ZxPolComHandle* store, Sequence& sequence, Items items) {
    for (size_t size = std::max<size_t>(1, items(sequence).size() / 2);; size /= 2) {
        for (size_t begin = 0; begin < items(sequence).size();) {
            Sequence shorter = sequence;
            auto& left = items(shorter);
            const auto first = left.begin() + static_cast<std::ptrdiff_t>(begin);
            left.erase(first, first + static_cast<std::ptrdiff_t>(std::min(size, left.size() - begin)));
            if (runSequence(store, shorter).empty())
                begin += size;
            else
                sequence = shorter;
        }
        if (size <= 1) return;
    }
}

}  // namespace

Sequence shrunk(_ZxPolComHandle* store, Sequence sequence) {
    leaveOut(store, sequence, [](Sequence& all) -> Sequence& { return all; });
    for (size_t i = 0; i < sequence.size(); ++i) {
        leaveOut(store, sequence, [i](Sequence& all) -> Addresses& { return all[i].addresses; });
        leaveOut(store, sequence, [i](Sequence& all) -> Addresses& { return all[i].subjects; });
    }
    return sequence;
}

}  // namespace model
