// How much stack calls of the C interface need. docs/limits.md names the number.

#include <gtest/gtest.h>

#include "support/EveryCall.h"
#include "support/EveryDecoder.h"
#include "support/PaintedStack.h"

namespace {

constexpr std::size_t kDocumentedKilobytes = 16;
constexpr std::size_t kDocumentedBytes = 1024 * kDocumentedKilobytes;

class Stack : public testing::Test {
protected:
    void SetUp() override {
        if (!test::kRunsInFull) GTEST_SKIP() << "another compiler, or a sanitizer: other frames";
    }

    struct Deepest {
        std::size_t bytes = 0;
        std::string call;
    };

    /// Makes every call on a thread of its own. Returns: the most that a thread used.
    static Deepest deepest(test::PaintedStack& stack) {
        Deepest most;
        for (const auto& every : test::callsOfAllKinds())
            for (const test::NamedCall& call : every->calls)
                for (const std::uint32_t flags : {0U, std::uint32_t{TESK_PLAIN}}) {
                    const std::size_t bytes = usedBy(stack, call, flags);
                    if (bytes > most.bytes) most = {bytes, call.name};
                }
        return most;
    }

    static std::size_t usedBy(test::PaintedStack& stack, const test::NamedCall& call,
                              std::uint32_t flags) {
        tesk_status status = TESK_INVALID_ARGUMENT;
        const std::size_t bytes = stack.bytesUsedBy([&] {
            tesk_options options = TESK_OPTIONS_INIT;
            options.flags = flags;
            tesk_codec* codec = nullptr;
            tesk_create(&options, &codec);
            status = call.make(codec);
            tesk_destroy(codec);
        });
        EXPECT_EQ(status, call.expected) << call.name;
        return bytes;
    }

    /// Returns: what a thread that does nothing uses; its own data are on the stack as well.
    static std::size_t usedByThread() {
        test::PaintedStack stack(1 << 20);
        return stack.bytesUsedBy([] {});
    }
};

TEST_F(Stack, CallsNeedNoMoreThanThePageOfLimitsSays) {
    test::PaintedStack stack(1 << 20);
    const Deepest most = deepest(stack);
    const std::size_t used = most.bytes - usedByThread();
    std::printf("stack: %zu bytes (%s), and %zu of the thread\n", used, most.call.c_str(),
                usedByThread());
    EXPECT_LE(used, kDocumentedBytes);
    EXPECT_GT(used, kDocumentedBytes / 3) << "the page may promise more";
}

TEST_F(Stack, ThePageOfLimitsNamesTheNumber) {
    const test::Bytes page = test::readFile(TESK_DOCS_FOLDER "/limits.md");
    const std::string row = "| How much stack does a call of the C interface need? | " +
                            std::to_string(kDocumentedKilobytes) + " KiB;";
    EXPECT_NE(std::string(page.begin(), page.end()).find(row), std::string::npos) << row;
}

TEST_F(Stack, CallsWorkOnOneThatIsNoLarger) {
    test::PaintedStack stack(kDocumentedBytes + usedByThread());
    EXPECT_LE(deepest(stack).bytes, stack.sizeBytes());
}

}  // namespace
