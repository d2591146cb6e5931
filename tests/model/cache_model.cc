#include "model/cache_model.h"

#include <algorithm>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "pattern/rfc2822_checker.h"

namespace model {
namespace {

int folded(char c) {
    return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<unsigned char>(c);
}

}  // namespace

int compareFolded(const std::string& a, const std::string& b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        if (folded(a[i]) != folded(b[i])) return folded(a[i]) < folded(b[i]) ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

std::string sortKeyOf(const std::string& address) {
    std::vector<char> key(address.size() + 1);
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), address.c_str());
    return key.data();
}

CacheModel::ListType CacheModel::listOf(const std::string& address) {
    return address.find('*') != std::string::npos ? ZxPolAddrCache::WildCardList : ZxPolAddrCache::ExactList;
}

// The place of the first item whose key is not less than `key`.
size_t CacheModel::lowerBound(const Items& items, const std::string& key) {
    size_t place = 0;
    while (place < items.size() && compareFolded(items[place].key, key) < 0)
        ++place;
    return place;
}

bool CacheModel::isAt(const Items& items, size_t place, const std::string& key) {
    return place < items.size() && compareFolded(items[place].key, key) == 0;
}

void CacheModel::insert(const std::string& address, ListType type) {
    const Item item{address, sortKeyOf(address), _insertions++};
    Items& items = itemsOf(type);
    const size_t place = lowerBound(items, item.key);
    if (isAt(items, place, item.key)) return;
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(place), item);
    _user.push_back(item);
}

bool CacheModel::remove(const std::string& address, ListType type) {
    const std::string key = sortKeyOf(address);
    Items& items = itemsOf(type);
    const size_t place = lowerBound(items, key);
    if (!isAt(items, place, key)) return false;
    const uint64_t number = items[place].number;
    _user.erase(std::find_if(_user.begin(), _user.end(), [number](const Item& item) { return item.number == number; }));
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(place));
    return true;
}

bool CacheModel::find(const std::string& address, ListType type) const {
    const std::string key = sortKeyOf(address);
    const Items& items = itemsOf(type);
    return isAt(items, lowerBound(items, key), key);
}

bool CacheModel::match(const std::string& address, ListType type, uint32_t& weight, ZxPolMatchWeightType kind) const {
    if (type == ZxPolAddrCache::ExactList) {
        if (!find(address, type)) return false;
        weight = ZxPolPriority::maxWeight();
        return true;
    }
    const ZxPolCondWildcardPattern subject(address.c_str());
    bool isMatch = false;
    for (const Item& item : _wildcards) {
        ZxPolCondWildcardPattern pattern(item.text.c_str());
        if (!(pattern == subject)) continue;
        isMatch = true;
        weight = std::max(weight, ZxPolPriority::calcWeight(pattern, kind));
    }
    return isMatch;
}

bool CacheModel::matchList(const std::string& address, uint32_t& weight, ZxPolMatchWeightType kind) const {
    weight = ZxPolPriority::minWeight();
    return match(address, ZxPolAddrCache::ExactList, weight, kind) ||
           match(address, ZxPolAddrCache::WildCardList, weight, kind);
}

std::optional<std::string> CacheModel::inUserOrder(size_t index) const {
    if (index >= _user.size()) return std::nullopt;
    return _user[index].text;
}

std::optional<std::string> CacheModel::inAlphaOrder(size_t index, bool isAscending) const {
    if (index >= _user.size()) return std::nullopt;
    const size_t wildcards = _wildcards.size();
    if (index < wildcards) return _wildcards[isAscending ? index : wildcards - index - 1].text;
    if (isAscending) return _exact[index - wildcards].text;
    if (index + 1 == _user.size()) return std::nullopt;
    return _exact[_exact.size() + wildcards - index - 2].text;
}

void CacheModel::clear() {
    _exact.clear();
    _wildcards.clear();
    _user.clear();
}

}  // namespace model
