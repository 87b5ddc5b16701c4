#pragma once

#include <string>

namespace qmx {

/// Returns: the same words in UTF-8.
std::string latin1ToUtf8(const std::string& text);

bool isUtf8(const std::string& text);

}  // namespace qmx
