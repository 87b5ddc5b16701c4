#include "info/JsonString.h"

#include <gtest/gtest.h>

namespace {

using qmx::jsonString;
using qmx::onOneLine;

TEST(JsonString, PlainTextIsQuoted) {
    EXPECT_EQ(jsonString(""), "\"\"");
    EXPECT_EQ(jsonString("a b/c.tk"), "\"a b/c.tk\"");
}

TEST(JsonString, QuotesBackslashesAndControlCharactersAreEscaped) {
    EXPECT_EQ(jsonString("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(jsonString("\n\x01\x1f\x7f"), "\"\\u000a\\u0001\\u001f\\u007f\"");
}

TEST(JsonString, CharactersOfUtf8Pass) {
    // U+00E9, U+20AC, U+10FFFF and the bounds of each length.
    for (const char* text : {"\xC3\xA9", "\xE2\x82\xAC", "\xF4\x8F\xBF\xBF", "\xC2\x80",
                             "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x90\x80\x80"})
        EXPECT_EQ(jsonString(text), '"' + std::string(text) + '"');
}

TEST(JsonString, EachByteThatIsNoUtf8IsReplaced) {
    const std::string mark = "\xEF\xBF\xBD";
    const auto replaced = [&](int count) {
        std::string json = "\"";
        for (int i = 0; i < count; ++i)
            json += mark;
        return json + '"';
    };
    EXPECT_EQ(jsonString("a\xFFz"), "\"a" + mark + "z\"");
    EXPECT_EQ(jsonString("\x80"), replaced(1));
    EXPECT_EQ(jsonString("\xC3"), replaced(1));              // cut
    EXPECT_EQ(jsonString("\xC3("), "\"" + mark + "(\"");     // no second byte
    EXPECT_EQ(jsonString("\xC0\x80"), replaced(2));          // longer than needed
    EXPECT_EQ(jsonString("\xE0\x9F\xBF"), replaced(3));      // longer than needed
    EXPECT_EQ(jsonString("\xED\xA0\x80"), replaced(3));      // half of a pair
    EXPECT_EQ(jsonString("\xF4\x90\x80\x80"), replaced(4));  // beyond the last character
    EXPECT_EQ(jsonString("\xF8\x88\x80\x80\x80"), replaced(5));
}

TEST(OnOneLine, ControlCharactersAreEscaped) {
    EXPECT_EQ(onOneLine("a\nb\x1B[z\x01\x1F"), "a\\u000ab\\u001b[z\\u0001\\u001f");
    EXPECT_EQ(onOneLine("\x7F"), "\\u007f");
    EXPECT_EQ(onOneLine("\xC2\x80\xC2\x9F"), "\\u0080\\u009f");
    EXPECT_EQ(onOneLine("\x80\x9F"), "\\u0080\\u009f");  // of an 8-bit code
}

TEST(OnOneLine, AllElseStaysAsItIs) {
    // The bounds of the control characters, other characters with their bytes, and no UTF-8.
    for (const char* text : {"", " ~/a\"b\\c.tk", "\xC2\xA0", "\xC3\x80\xC3\x9F", "\xE2\x82\x80",
                             "\xF4\x8F\x80\x80", "\xA0\xFF", "\xC2"})
        EXPECT_EQ(onOneLine(text), text);
}

}  // namespace
