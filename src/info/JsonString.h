#pragma once

#include <string>
#include <string_view>

namespace qmx {

/// Returns: text as a string of JSON, with its quotation marks. Bytes that are no UTF-8, as names of
/// files may have, become U+FFFD.
std::string jsonString(std::string_view text);

/// Returns: text for a line that is read by people, maybe on a terminal: control characters as JSON
/// escapes them, all other bytes as they are.
std::string onOneLine(std::string_view text);

}  // namespace qmx
