#include "random_policy.h"

#include <algorithm>
#include <array>
#include <set>

#include "output/text.h"
#include "policy/address_text.h"
#include "policy/policy_check.h"

namespace tool {

namespace {

// Pieces that texts are made of.
constexpr std::array kPieces{"a",
                             "B",
                             "7",
                             " ",
                             "  ",
                             "\"",
                             "'",
                             "\\",
                             ":",
                             ": ",
                             "#",
                             " #",
                             "-",
                             "- ",
                             "*",
                             "&",
                             "!",
                             "%",
                             "@",
                             "`",
                             ",",
                             "{",
                             "}",
                             "[",
                             "]",
                             "|",
                             ">",
                             "?",
                             "\n",
                             "\t",
                             "\r",
                             "\r\n",
                             "\x01",
                             "\x7f",
                             "~",
                             "null",
                             "true",
                             "0x1f",
                             "1e5",
                             ".5",
                             "\xC3\xA4",
                             "\xE2\x82\xAC",
                             "\xF0\x9F\x93\xAE",
                             "\xFF",
                             "\xC3",
                             "\xC2\x85",
                             "\xEF\xBB\xBF",
                             "\xE2\x80\xA8",
                             "\xE2\x80\xAE",
                             "---",
                             "...",
                             "<<",
                             "=",
                             "yes",
                             "\xEF\xBF\xBE"};

}  // namespace

std::string RandomPolicy::text(size_t most) {
    std::string made;
    for (size_t count = upTo(6); count > 0; --count) {
        const std::string piece = kPieces[upTo(kPieces.size() - 1)];
        if (made.size() + piece.size() <= most) made += piece;
    }
    if (upTo(40) == 0) made.append(most - made.size(), 'x');
    return made;
}

std::string RandomPolicy::name(size_t most) {
    std::string made = text(most);
    made.erase(std::remove(made.begin(), made.end(), '\\'), made.end());
    return made.empty() ? "n" : made;
}

std::string RandomPolicy::address() {
    constexpr std::array kAddresses{"*",     "*@*",     "a@b.example",      "*@*.b.example",
                                    "A.b@*", "(Staff)", "\"a b\"@c.example"};
    return kAddresses[upTo(kAddresses.size() - 1)];
}

void RandomPolicy::fillSetting(Setting& setting, const std::string& prefix, int depth) {
    std::set<std::string> used;
    for (size_t count = upTo(4); count > 0; --count) {
        const std::string own = name(255);
        if (!used.insert(lowerCase(own)).second) continue;
        const std::string path = prefix + own;
        switch (upTo(depth > 2 ? 2 : 3)) {
            case 0:
                setting[path] = static_cast<uint32_t>(_random());
                break;
            case 1:
                setting[path] = text(3000);
                break;
            case 2: {
                std::vector<std::string> texts;
                for (size_t items = upTo(3); items > 0; --items)
                    texts.push_back(text(20) + "x");
                setting[path] = texts;
                break;
            }
            default:
                setting[path] = SettingKey{};
                fillSetting(setting, path + "\\", depth + 1);
        }
    }
}

Task RandomPolicy::task(const std::string& name) {
    Task made;
    made.name = name;
    made.displayName = text(255);
    made.comment = text(511);
    made.filter = upTo(1) == 0 ? static_cast<uint32_t>(upTo(9)) : static_cast<uint32_t>(_random());
    made.enable = upTo(3) != 0;
    made.overridable = upTo(1) == 0;
    std::set<std::string> used;
    for (size_t count = upTo(3); count > 0; --count) {
        const std::string outcome = this->name(255);
        if (used.insert(lowerCase(outcome)).second) made.outcomes[outcome].text = text(3000) + "x";
    }
    fillSetting(made.setting, "", 0);
    return made;
}

Rule RandomPolicy::rule(const std::string& path, int depth) {
    Rule made;
    made.displayName = text(255);
    made.comment = text(511);
    for (size_t count = upTo(3) + (depth == 0 ? 1 : 0); count > 0; --count)
        made.conditions.push_back({address(), address(), {}});
    if (made.conditions.empty() && upTo(1) == 0) made.matchType = static_cast<int32_t>(upTo(5));
    std::set<std::string> marks;
    for (size_t count = upTo(2); count > 0; --count) {
        const std::string mark = "\\" + text(200) + "t";
        if (marks.insert(markKey(mark)).second) made.inactive.push_back({mark, {}});
    }
    std::set<std::string> used;
    for (size_t count = upTo(3); count > 0; --count) {
        const std::string own = name(20);
        if (childName(path, own).size() <= kMaxName && used.insert(lowerCase(own)).second)
            made.tasks.push_back(task(own));
    }
    used.clear();
    for (size_t count = depth > 2 ? 0 : upTo(3); count > 0; --count) {
        const std::string own = name(255);
        if (!used.insert(lowerCase(own)).second) continue;
        made.rules.push_back(rule(childName(path, own), depth + 1));
        made.rules.back().name = own;
    }
    return made;
}

// An address, which may be invalid.
std::string RandomPolicy::listAddress() {
    constexpr std::array kDomains{"@b.example", "@*.b.example", "@*", "@[10.0.0.1]", "@[*]", "@x", "@C.Example"};
    const std::string domain = kDomains[upTo(kDomains.size() - 1)];
    switch (upTo(4)) {
        case 0:
            return "*" + domain;
        case 1:
            return "\"" + text(40) + "\"" + domain;
        case 2:
            return "\"\\" + text(40) + "\"." + text(10) + domain;
        case 3:
            return text(30) + domain;
        default:
            return "Name" + std::to_string(upTo(999)) + domain;
    }
}

AddressList RandomPolicy::list() {
    if (upTo(1) == 0) {
        NormalList list{text(255), text(511), std::vector<std::string>()};
        AddressKeys used;
        for (size_t count = upTo(1) == 0 ? upTo(3) : upTo(300); count > 0; --count) {
            const std::string address = listAddress();
            if (addressFault(address).empty() && used.insert(addressKey(address)).second)
                list.addresses->push_back(address);
        }
        return list;
    }
    DirectoryList list;
    list.displayName = text(255);
    list.comment = text(511);
    list.server = text(255);
    list.port = static_cast<uint32_t>(_random());
    list.searchroot = text(255);
    list.authentication = static_cast<uint32_t>(upTo(3));
    list.schematype = static_cast<uint32_t>(upTo(3));
    list.username = text(255);
    if (upTo(1) == 0) list.password = text(39);
    list.filter = text(1023);
    return list;
}

Classification RandomPolicy::classification(const std::string& name) {
    Classification made{name, text(255), text(511), {}};
    std::set<std::string> used;
    for (size_t count = upTo(4); count > 0; --count) {
        // Short names from a small set, so that from one policy to the next actions are kept and moved, too.
        const std::string own = upTo(1) == 0 ? std::string(1, static_cast<char>('a' + upTo(4))) : this->name(255);
        if (!used.insert(lowerCase(own)).second) continue;
        Action action{own, text(255), text(511), static_cast<uint32_t>(upTo(1) == 0 ? upTo(3) : _random()), {}};
        fillSetting(action.setting, "", 0);
        made.actions.push_back(std::move(action));
    }
    return made;
}

Policy RandomPolicy::make() {
    Policy policy;
    std::set<std::string> used;
    for (size_t count = upTo(2); count > 0; --count) {
        const std::string own = name(255);
        if (!used.insert(lowerCase(own)).second) continue;
        policy.lists[own] = list();
    }
    used.clear();
    for (size_t count = upTo(3); count > 0; --count) {
        const std::string own = upTo(1) == 0 ? std::string(1, static_cast<char>('A' + upTo(2))) : name(255);
        if (used.insert(lowerCase(own)).second) policy.classifications.push_back(classification(own));
    }
    for (size_t count = upTo(3); count > 0; --count)
        policy.exclusiveFilters[static_cast<uint32_t>(_random())] =
            upTo(1) == 0 ? FilterPriority::Ascending : FilterPriority::Descending;
    policy.root = rule("\\", 0);
    return policy;
}

}  // namespace tool
