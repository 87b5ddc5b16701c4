#pragma once

#include <cstdint>
#include <string>

#include "convert/Buffer.h"

namespace qmx {

/// Reads a file, or the standard input for "-", as a whole. Throws: Refusal where it cannot be read or has more than
/// mostBytes; std::bad_alloc.
Buffer readInput(const std::string& name, std::uint64_t mostBytes);

/// Reads up to count first bytes. Returns: fewer where there are fewer, none where it cannot be read.
Buffer readHead(const std::string& name, std::size_t count);

}  // namespace qmx
