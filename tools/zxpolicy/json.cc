#include "json.h"

#include <nlohmann/json.hpp>

namespace tool {

using Document = nlohmann::ordered_json;

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
    return _document->dump(-1, ' ', false, Document::error_handler_t::replace) + "\n";
}

}  // namespace tool
