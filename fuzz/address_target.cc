// The syntax of addresses, the cutting of texts and the taking off of quotes, against slow ones. An input is one text;
// what stands before its first line feed are the characters to cut at.
#include <string>
#include <vector>

#include "bytes.h"
#include "fail.h"
#include "pattern/rfc2822_checker.h"
#include "slow_address.h"

using fuzz::shown;

namespace {

std::vector<std::string> realTokens(const std::string& text, const std::string& separators, char quote) {
    std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    unsigned int count = 77;
    const char* token = ZxPolRfc2822Checker::getTokens(copy.data(), separators.c_str(), count, quote);
    std::vector<std::string> tokens;
    for (unsigned int i = 0; i < count; ++i) {
        tokens.emplace_back(token);
        token += tokens.back().size() + 1;
    }
    return tokens;
}

void checkTokens(const std::string& text, const std::string& separators, char quote) {
    const std::vector<std::string> found = realTokens(text, separators, quote);
    fuzz::requireSame(oracle::tokens(text, separators, quote), found, "tokens of " + shown(text));
    if (found.empty()) return;
    // Nothing is lost but one separator between two tokens.
    std::string again = found[0];
    for (size_t i = 1; i < found.size(); ++i)
        again += text[again.size()] + found[i];
    fuzz::requireSame(text, again, "joined tokens of " + shown(text));
}

void checkStripping(const std::string& text) {
    std::vector<char> copy(text.size() + 1, 'x');
    ZxPolRfc2822Checker::stripLocalPartBoundary(copy.data(), text.c_str());
    fuzz::requireSame(slow::stripped(text), std::string(copy.data()), "stripped " + shown(text));
    std::vector<char> inPlace(text.c_str(), text.c_str() + text.size() + 1);
    ZxPolRfc2822Checker::stripLocalPartBoundary(inPlace.data(), inPlace.data());
    fuzz::requireSame(std::string(copy.data()), std::string(inPlace.data()), "stripped in place " + shown(text));
}

void checkParts(const std::string& text) {
    using Checker = ZxPolRfc2822Checker;
    const char* const s = text.c_str();
    const auto same = [&](bool right, bool found, const char* what) {
        if (right != found) fuzz::fail(what + shown(text));
    };
    same(slow::isAddress(text), Checker::checkFormatValidity(s), "address ");
    same(slow::isLocalPart(text), Checker::_checkLocalPartValidity(s), "local part ");
    same(slow::isDomain(text), Checker::_checkDomainValidity(s), "domain ");
    same(slow::isDotAtom(text), Checker::_is_dot_atom(s), "dot-atom ");
    same(slow::isDotAtom(text), Checker::_is_obs_domain(s), "obsolete domain ");
    same(slow::isQuotedString(text), Checker::_is_quoted_string(s), "quoted string ");
    same(slow::areObsoleteWords(text), Checker::_is_obs_local_part(s), "obsolete local part ");
    same(slow::isEnclosed(text, '[', ']', slow::isDomainText), Checker::_is_domain_literal(s), "domain literal ");
    same(slow::areAll(text, slow::isAtomText), Checker::_isAllCharLegal(s, Checker::atext), "atom text ");
    same(slow::areAll(text, slow::isEscapable), Checker::_isAllCharLegal(s, Checker::text), "text ");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    const std::string separators = fuzz::upToNul(bytes.until('\n'));
    const std::string text = fuzz::upToNul(bytes.rest());
    for (const std::string& cutAt : {separators, std::string("."), std::string("@"), std::string()}) {
        for (const char quote : {'"', '\0', 'q'})
            checkTokens(text, cutAt, quote);
    }
    checkStripping(text);
    checkParts(text);
    return 0;
}
