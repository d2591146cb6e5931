// Result codes by name, and what a user can do about them.
#pragma once

#include <string>

namespace tool {

// The reason alone: the low 16 bits, the same for codes of the library and of any store.
constexpr unsigned int kReasonTooSmall = 6;
constexpr unsigned int kReasonEnd = 12;
constexpr unsigned int kReasonNotFound = 0x1804;

bool hasReason(int code, unsigned int reason);

// The name of a result code, such as "ZXPOL_E_NOT_FOUND"; "unknown result" for a code of another store.
const char* resultName(int code);

// "NAME (0x81021804)"
std::string codeText(int code);

// "NAME (0x81021804): what to do", with the store's own sentence in between where it has one for this code.
std::string describeResult(int code);

}  // namespace tool
