#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "convert/Buffer.h"

namespace qmx {

/// Reads the words of a head that is text, up to where the bytes of the image begin.
class CTextCursor {
public:
    explicit CTextCursor(ByteView textBytes, std::size_t startByte)
        : text(textBytes), next(startByte) {}

    std::size_t position() const { return next; }
    bool isAtEnd() const { return next >= text.size(); }

    /// Takes a word behind white space and comments, which go from # to the end of their line. Returns: an empty
    /// one at the end of the text, and no more than the first 64 characters.
    std::string word();
    /// Takes a number. Returns: nothing where there is none up to limit.
    std::optional<std::uint64_t> number(std::uint64_t limit);
    /// Takes the rest of a line, without its end.
    std::string line();
    /// Takes the one white space behind a head. Returns: whether it is there.
    bool separator();
    /// Takes one character behind white space and comments. Returns: 0 at the end of the text.
    char character();

    /// Whether comments were passed over.
    bool hasComments() const { return sawComment; }

private:
    void skipSpace();

    ByteView text;
    std::size_t next;
    bool sawComment = false;
};

}  // namespace qmx
