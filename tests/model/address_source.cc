#include "model/address_source.h"

namespace model {
namespace {

const std::vector<std::string> kNames = {"a",       "b",          "ab",          "B",       "_x",      "x-1",
                                         "a.b",     "a..b",       "a.",          "\"a\"",   "\"a.b\"", "a.\"b\"",
                                         "\"a\".b", "\"a b\"",    "\"\"",        "\"a@b\"", "\"a\"\"", "\"a\\\"b\"",
                                         "\"[\"",   "john.smith", "\"a\".\"b\"", "\"a.\"",  "c"};
const std::vector<std::string> kDomains = {"x",    "X",     "y.x", "z.y.x", "q.z.y.x", "b",     "x.",
                                           "a..x", "[1.2]", "[a]", "[]",    "[x.y]",   "[\\a]", "y-1.x"};
const std::vector<std::string> kInvalid = {"",      "a",     "@x",     "a@",       "a@b@c",   "jo*@x", "x@*.*",
                                           ".a@b",  "a b@x", "\x80@x", "a@\xff.x", " a@x",    "a@x ",  "*@",
                                           "**",    "*@**",  "a@[x]y", "(a)@x",    "a@[*.1]", "*.a@x", "x@mail.*.b",
                                           "\"a@x", "a\"@x", "a@ x",   "\"a*\"@x", "a@\"x\"", "*@*@*", "a@[*]*"};
const std::vector<std::string> kStarDomains = {"*", "*.x", "*.y.x", "*.z.y.x", "*.", "*..x", "[*]", "*.X", "*.a..x"};
const std::vector<std::string> kUnusual = {
    "a*",  "*a",  "*.*", "**",  "a.*",  "*.a", "a.*.b", "x",     "*",     "a*b",   "[*1]",   "[1*]", "*.",   ".*",   "",
    " a ", "a b", "\ta", "* *", "*.x*", "x.*", "*.x ",  "[*].x", "[ * ]", "\x80*", "*.\xff", "**.x", "* .x", "*.x.*"};

char flipped(char c) {
    if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
    if (c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
    return c;
}

std::string flippedSomewhere(std::string text, RandomSource& random) {
    for (char& c : text) {
        if (random.inPercent(50)) c = flipped(c);
    }
    return text;
}

std::string labels(size_t count, RandomSource& random) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += std::string(i == 0 ? "" : ".") + "abxy"[random.below(4)];
    return text;
}

std::string half(const std::vector<std::string>& usual, RandomSource& random) {
    const size_t choice = random.below(100);
    if (choice < 70) return random.pick(usual);
    if (choice < 85) return random.pick(kUnusual);
    if (choice < 90) return labels(random.between(49, 52), random) + (random.inPercent(50) ? ".x" : "");
    if (choice < 94) return std::string(random.between(252, 258), 'a');
    return random.pick(kUnusual) + "." + random.pick(usual);
}

}  // namespace

std::string variantOf(const std::string& address, RandomSource& random) {
    const size_t at = address.find('@');
    switch (random.below(7)) {
        case 0:
        case 1:
            return flippedSomewhere(address, random);
        case 2:
            return at == std::string::npos ? address : "\"" + address.substr(0, at) + "\"" + address.substr(at);
        case 3:
            if (address.size() > 2 && address[0] == '"' && at != std::string::npos && address[at - 1] == '"')
                return address.substr(1, at - 2) + address.substr(at);
            return address + "x";
        case 4:
            return at == std::string::npos ? address : address.substr(0, at + 1) + "y." + address.substr(at + 1);
        case 5:
            return at == std::string::npos ? address : random.pick(kNames) + address.substr(at);
        default:
            return address.substr(0, address.size() - (address.empty() ? 0 : 1));
    }
}

std::string shortAddress(RandomSource& random) {
    const size_t choice = random.below(100);
    if (choice < 12) return random.pick(kInvalid);
    if (choice < 30) return wildcardPattern(random);
    return random.pick(kNames) + "@" + random.pick(kDomains);
}

std::string wildcardPattern(RandomSource& random) {
    const size_t choice = random.below(100);
    if (choice < 4) return "*";
    if (choice < 8) return "*@*";
    if (choice < 10) return "\"*\"@" + random.pick(kDomains);
    if (choice < 35) return "*@" + random.pick(kDomains);
    if (choice < 60) return "*@" + random.pick(kStarDomains);
    return random.pick(kNames) + "@" + random.pick(kStarDomains);
}

std::string unusualPattern(RandomSource& random) {
    const size_t choice = random.below(100);
    if (choice < 10) return random.pick(kInvalid);
    if (choice < 15) return random.pick(kUnusual);
    const bool hasStar = random.inPercent(40);
    return half(hasStar ? kUnusual : kNames, random) + "@" + half(hasStar ? kStarDomains : kDomains, random);
}

std::string longAddress(size_t length, RandomSource& random) {
    const size_t name = 1 + random.below(length - 4);
    std::string text = "a";
    while (text.size() < name)
        text += random.inPercent(10) ? '.' : "abcA"[random.below(4)];
    text += '@';
    while (text.size() < length)
        text += random.inPercent(10) && text.back() != '@' ? '.' : "abcX"[random.below(4)];
    return text;
}

std::string subjectFor(const std::vector<std::string>& pool, RandomSource& random) {
    const size_t choice = random.below(100);
    if (choice < 30) return random.pick(pool);
    if (choice < 55) return variantOf(random.pick(pool), random);
    if (choice < 75) return random.pick(kNames) + "@" + random.pick(kDomains);
    if (choice < 80) return random.pick(kInvalid);
    if (choice < 90) return half(kNames, random) + "@" + half(kDomains, random);
    if (choice < 93) return half(kNames, random) + "@" + labels(random.between(1, 4), random) + ".y.x";
    return unusualPattern(random);
}

}  // namespace model
