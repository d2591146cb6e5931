#include "model/list_model.h"

#include <algorithm>

#include "pattern/cond_wildcard_pattern.h"

namespace model {
namespace {

constexpr size_t kBound = 2048;
constexpr size_t kSparse = 1364;
constexpr size_t kLongest = 511;

bool isValid(const std::string& address) {
    return address.size() <= kLongest && ZxPolCondWildcardPattern::isPatternValid(address.c_str());
}

}  // namespace

std::string imageOf(const Addresses& addresses) {
    std::string image;
    for (const std::string& address : addresses)
        image += address + '\0';
    return image + '\0';
}

Addresses addressesOf(const std::string& image) {
    Addresses found;
    for (size_t at = 0; at < image.size() && image[at] != '\0'; at += found.back().size() + 1)
        found.emplace_back(image.c_str() + at);
    return found;
}

size_t ListModel::SubList::find(const std::string& address) const {
    size_t position = 0;
    while (position < addresses.size() && compareFolded(addresses[position], address) != 0)
        ++position;
    return position;
}

ListModel::Numbers ListModel::numbers() const {
    Numbers found;
    for (const auto& [number, image] : _images)
        found.push_back(number);
    return found;
}

ListModel::SubList ListModel::load(unsigned number) const {
    const auto found = _images.find(number);
    return {number, found == _images.end() ? Addresses() : addressesOf(found->second), false};
}

int ListModel::flush(const SubList& subList) {
    if (!subList.isDirty) return ZXPOL_S_OK;
    if (subList.imageLength() > kBound) return ZXPOL_E_BUFFER_TOO_SMALL;
    _images[subList.number] = imageOf(subList.addresses);
    return ZXPOL_S_OK;
}

void ListModel::fillCache() {
    _isOutOfStep = false;
    _mayHaveDoubles = false;
    _cache.clear();
    for (const unsigned number : numbers()) {
        for (const std::string& address : load(number).addresses) {
            if (address.size() > kLongest) break;
            const CacheModel::ListType type = CacheModel::listOf(address);
            _mayHaveDoubles = _mayHaveDoubles || _cache.find(address, type);
            _cache.insert(address, type);
        }
    }
}

void ListModel::setImage(unsigned number, const std::string& image) {
    _images.erase(number);
    if (!image.empty()) _images[number] = image;
}

int ListModel::insert(const Addresses& addresses) {
    if (addresses.empty()) return ZXPOL_E_INVALID_ARG;
    Numbers names = numbers();
    bool hasCurrent = false, isTailLoaded = false, isAnyInvalid = false;
    SubList current{};
    for (const std::string& address : addresses) {
        if (!isValid(address)) {
            isAnyInvalid = true;
            continue;
        }
        const CacheModel::ListType type = CacheModel::listOf(address);
        if (_cache.find(address, type)) continue;
        if (!isTailLoaded && !names.empty()) {
            current = load(names.back());
            hasCurrent = true;
        }
        isTailLoaded = true;
        if (!hasCurrent || current.imageLength() + address.size() + 1 >= kBound + 1) {
            names.push_back(static_cast<unsigned>(names.size() + 1));
            current = load(names.back());
            hasCurrent = true;
        }
        current.addresses.push_back(address);
        current.isDirty = true;
        const int result = flush(current);
        if (result != ZXPOL_S_OK) return result;
        _cache.insert(address, type);
    }
    return isAnyInvalid ? ZXPOL_E_INVALID_FORMAT : ZXPOL_S_OK;
}

// Looks for the sub-list that holds an address, loading those that have not been looked at.
bool ListModel::findHolder(const std::string& address, const Numbers& numbers, SubLists& loaded, size_t& holder) const {
    for (holder = 0; holder < numbers.size(); ++holder) {
        if (holder == loaded.size()) loaded.push_back(load(numbers[holder]));
        if (loaded[holder].find(address) < loaded[holder].addresses.size()) return true;
    }
    return false;
}

int ListModel::remove(const Addresses& addresses) {
    if (addresses.empty()) return ZXPOL_E_INVALID_ARG;
    Numbers names = numbers();
    SubLists loaded;
    size_t lowest = SIZE_MAX;
    bool isAnyMissing = false;
    for (const std::string& address : addresses) {
        size_t holder = 0;
        if (!findHolder(address, names, loaded, holder)) {
            isAnyMissing = true;
            continue;
        }
        SubList& subList = loaded[holder];
        subList.addresses.erase(subList.addresses.begin() + static_cast<std::ptrdiff_t>(subList.find(address)));
        subList.isDirty = true;
        const int result = flush(subList);
        if (result != ZXPOL_S_OK) return result;
        const bool wasCached = _cache.remove(address, CacheModel::listOf(address));
        // Another value may hold it still.
        _isOutOfStep = _isOutOfStep || _mayHaveDoubles;
        if (!wasCached) return ZXPOL_E_NOT_FOUND;
        if (subList.imageLength() < kSparse) lowest = std::min(lowest, holder);
    }
    if (lowest != SIZE_MAX) {
        while (loaded.size() < names.size())
            loaded.push_back(load(names[loaded.size()]));
        // Whatever ended it may have left an address in two values.
        if (!shift(lowest, loaded, names)) _mayHaveDoubles = true;
    }
    return isAnyMissing ? ZXPOL_E_NOT_FOUND : ZXPOL_S_OK;
}

ListModel::Fetched ListModel::fetchFirst(const SubList& subList, std::string& address) {
    if (subList.addresses.empty()) return Fetched::nothing;
    address = subList.addresses.front();
    return address.size() > kLongest ? Fetched::unreadable : Fetched::address;
}

bool ListModel::shift(size_t from, SubLists& loaded, Numbers& numbers) {
    const size_t last = loaded.size() - 1;
    bool isFinished = false;
    for (size_t to = from; !isFinished && to < last; ++to) {
        SubList& target = loaded[to];
        size_t source = to + 1;
        const size_t room = kBound < target.imageLength() ? 0 : kBound - target.imageLength();
        size_t moved = 0;
        std::string address;
        Fetched fetched = fetchFirst(loaded[source], address);
        while (fetched == Fetched::nothing && source < last)
            fetched = fetchFirst(loaded[++source], address);
        if (fetched == Fetched::nothing) break;
        if (fetched == Fetched::unreadable) return false;
        moved += address.size() + 1;
        while (moved <= room) {
            target.addresses.push_back(address);
            target.isDirty = true;
            Addresses& rest = loaded[source].addresses;
            rest.erase(rest.begin());
            loaded[source].isDirty = true;
            fetched = fetchFirst(loaded[source], address);
            while (fetched == Fetched::nothing && source < last) {
                flush(loaded[source]);
                fetched = fetchFirst(loaded[++source], address);
            }
            isFinished = fetched == Fetched::nothing;
            if (fetched != Fetched::address) break;
            moved += address.size() + 1;
        }
        flush(target);
        flush(loaded[source]);
        if (fetched == Fetched::unreadable) return false;
    }
    for (size_t index = loaded.size(); index-- > 0;) {
        if (loaded[index].imageLength() < 2) deleteValue(index, numbers);
    }
    return true;
}

// Deletes the value numbered `index` + 1: the values behind it move into the names before theirs, and the last name
// goes.
void ListModel::deleteValue(size_t index, Numbers& numbers) {
    for (size_t i = index + 1; i < numbers.size(); ++i) {
        const auto moved = _images.find(numbers[i]);
        if (moved == _images.end()) return;
        _images[numbers[i - 1]] = std::string(moved->second);
    }
    if (numbers.empty()) return;
    _images.erase(numbers.back());
    numbers.pop_back();
}

void ListModel::deleteAll() {
    _images.clear();
    _cache.clear();
    _mayHaveDoubles = false;
}

}  // namespace model
