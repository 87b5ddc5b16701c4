#include "convert/CConvertTotals.h"

#include <gtest/gtest.h>

namespace {

using namespace qmx;
using std::chrono::seconds;

ConvertOutcome outcomeOf(ConvertResult result, std::uint64_t rawBytes = 0,
                         std::uint64_t streamBytes = 0) {
    ConvertOutcome outcome;
    outcome.result = result;
    outcome.rawBytes = rawBytes;
    outcome.streamBytes = streamBytes;
    return outcome;
}

TEST(CConvertTotals, SaysHowFarTheWorkIs) {
    CConvertTotals totals(20);
    EXPECT_EQ(totals.progressWords(seconds(1)), "0 of 20 files");
    for (int i = 0; i < 10; ++i)
        totals.add(outcomeOf(ConvertResult::converted, 620'000'000, 257'000'000));
    EXPECT_EQ(totals.progressWords(seconds(10)),
              "10 of 20 files, 6.2 GB, 2.41:1, 620 MB/s, 10 s left");
    EXPECT_EQ(totals.progressWords(seconds(600)),
              "10 of 20 files, 6.2 GB, 2.41:1, 10 MB/s, 10 min left");
}

TEST(CConvertTotals, WhatWasThereAlreadySaysNothingAboutTheTimeThatIsLeft) {
    CConvertTotals totals(10);
    for (int i = 0; i < 5; ++i)
        totals.add(outcomeOf(ConvertResult::passedOver));
    totals.add(outcomeOf(ConvertResult::converted, 1000, 500));
    EXPECT_EQ(totals.progressWords(seconds(10)),
              "6 of 10 files, 1.0 KB, 2.00:1, 0 MB/s, 40 s left");
}

TEST(CConvertTotals, SumsUpAtTheEnd) {
    CConvertTotals totals(4);
    totals.add(outcomeOf(ConvertResult::converted, 3'000'000, 1'000'000));
    totals.add(outcomeOf(ConvertResult::approximated, 1'000'000, 1'000'000));
    EXPECT_EQ(totals.exitStatus(), 3);
    totals.add(outcomeOf(ConvertResult::passedOver));
    totals.add(outcomeOf(ConvertResult::refused, 5, 5));
    EXPECT_EQ(totals.exitStatus(), 1);
    EXPECT_EQ(totals.finalWords(),
              "2 of 4 files, 4.0 MB of pixels, 2.0 MB of streams (2.00:1), 1 approximations, 1 "
              "passed over, 1 refused");
    EXPECT_EQ(CConvertTotals(0).exitStatus(), 0);
}

}  // namespace
