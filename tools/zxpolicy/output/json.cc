#include "output/json.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "output/text.h"

namespace tool {

using Document = nlohmann::ordered_json;

namespace {

constexpr uint32_t kReportVersion = 1;

// Writes as \uHHHH what a document may hold as it is, but a terminal or a reader of lines should not get. All of that
// stands inside strings, and below U+10000.
std::string withEscapes(const std::string& document) {
    std::string out;
    out.reserve(document.size());
    uint32_t codePoint = 0;
    for (size_t position = 0; position < document.size();) {
        const size_t begin = position;
        if (!nextCodePoint(document, position, codePoint)) ++position;
        if (isFitForLine(codePoint)) {
            out.append(document, begin, position - begin);
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned int>(codePoint & 0xffffu));
        out += escaped;
    }
    return out;
}

}  // namespace

Json::Json(Document document) : _document(std::make_unique<Document>(std::move(document))) {}

Json::Json(const std::string& text) : Json(Document(text)) {}

Json::Json(const char* text) : Json(Document(text)) {}

Json::Json(bool truth) : Json(Document(truth)) {}

Json::Json(uint32_t number) : Json(Document(number)) {}

Json::Json(uint64_t number) : Json(Document(number)) {}

Json::Json(double number) : Json(Document(number)) {}

Json::Json(const std::vector<std::string>& texts) : Json(Document(texts)) {}

Json::Json(const Json& other) : Json(*other._document) {}

Json::Json(Json&& other) noexcept = default;

Json& Json::operator=(Json other) noexcept {
    _document.swap(other._document);
    return *this;
}

Json::~Json() = default;

Json Json::object(std::initializer_list<Member> members) {
    Json made(Document::object());
    for (const Member& member : members)
        made.add(member.first, member.second);
    return made;
}

Json Json::report(std::initializer_list<Member> members) {
    Json made = object({{"version", kReportVersion}});
    for (const Member& member : members)
        made.add(member.first, member.second);
    return made;
}

Json Json::null() {
    return Json(Document());
}

Json Json::array() {
    return Json(Document::array());
}

Json& Json::add(const char* name, const Json& value) {
    (*_document)[name] = *value._document;
    return *this;
}

Json& Json::add(const Json& item) {
    _document->push_back(*item._document);
    return *this;
}

std::string Json::line() const {
    return withEscapes(_document->dump(-1, ' ', false, Document::error_handler_t::replace)) + "\n";
}

}  // namespace tool
