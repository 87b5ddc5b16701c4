#pragma once

#include "api/tesk.h"
#include "bitstream/Status.h"
#include "container/Loss.h"
#include "support/TestImages.h"

namespace test {

/// What a way to use the codec is told besides the image or the stream. No way takes all of it.
struct Wish {
    /// Of the file drivers.
    double rate = 0.0;
    /// The last number of the command line, of the file drivers.
    int extra = 0;
    /// Of the object and the C interface.
    std::size_t budgetBytes = 0;
    /// Of the C interface. Plain streams are those of the other ways.
    std::uint32_t flags = TESK_PLAIN;
};

/// What came of it.
struct Outcome {
    /// An exit status, a number of Status.h, or a tesk_status, as the way has it.
    int status = qmx::kNotRun;
    /// The stream file or the pixels; empty when the status says that there are none.
    Bytes bytes;
    /// What the C interface says.
    tesk_result result = TESK_RESULT_INIT;
    /// What the file drivers and the object say about a stream.
    qmx::LossReport report;
    /// What the file drivers print.
    std::string lines;

    /// Of the C interface.
    bool isUsable() const { return status == TESK_OK || status == TESK_CUT; }
    bool saysLoss() const {
        return report.loss != qmx::Loss::none || result.loss != TESK_LOSS_NONE;
    }
};

using Call = Outcome;

/// Checks what came of a way: its status and its bytes.
inline void expectOutcome(int status, const Bytes& bytes, const Outcome& actual) {
    EXPECT_EQ(status, actual.status);
    EXPECT_TRUE(sameBytes(bytes, actual.bytes));
}

/// Checks that two ways came to the same.
inline void expectSameOutcome(const Outcome& expected, const Outcome& actual) {
    expectOutcome(expected.status, expected.bytes, actual);
}

}  // namespace test
