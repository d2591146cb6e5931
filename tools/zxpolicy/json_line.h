// JSON as lines of output.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tool {

// The document on one line. Bytes that are no UTF-8 become U+FFFD, as JSON has no other form for them.
inline std::string jsonLine(const nlohmann::ordered_json& document) {
    return document.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace tool
