// JSON documents for the output.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <utility>
#include <vector>

namespace tool {

// A value: a plain one, or an object or array that grows. Bytes that are no UTF-8 become U+FFFD in the text, as JSON
// has no other form for them. The library that makes the text is large: its header is included by one file only.
class Json {
public:
    using Member = std::pair<const char*, Json>;

    Json(const std::string& text);
    Json(const char* text);
    Json(bool truth);
    Json(uint32_t number);
    Json(uint64_t number);
    Json(double number);
    Json(const std::vector<std::string>& texts);
    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(Json other) noexcept;
    ~Json();

    static Json object(std::initializer_list<Member> members);
    // What a command reports: an object that begins with the version of the form, which all of them share.
    static Json report(std::initializer_list<Member> members);
    static Json null();
    static Json array();

    // Adds a member to an object, an item to an array.
    Json& add(const char* name, const Json& value);
    Json& add(const Json& item);

    // The document on a line of its own, in characters that are fit for one.
    std::string line() const;

private:
    explicit Json(nlohmann::ordered_json document);

    std::unique_ptr<nlohmann::ordered_json> _document;
};

}  // namespace tool
