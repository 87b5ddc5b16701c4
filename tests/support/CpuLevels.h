#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "image/CpuLevel.h"

namespace test {

/// A test that runs at one CPU level after the other; skipped, by name, where the processor lacks it.
class AtCpuLevel : public testing::TestWithParam<qmx::CpuLevel> {
protected:
    void SetUp() override {
        if (GetParam() > qmx::bestCpuLevel())
            GTEST_SKIP() << "no " << nameOf(GetParam()) << " on this processor";
        guard.emplace(GetParam());
    }

private:
    std::optional<qmx::CCpuLevelGuard> guard;
};

/// For INSTANTIATE_TEST_SUITE_P, with its names.
inline auto allCpuLevels() {
    return testing::Values(qmx::CpuLevel::scalar, qmx::CpuLevel::avx2, qmx::CpuLevel::avx512);
}

inline auto cpuLevelName() {
    return [](const testing::TestParamInfo<qmx::CpuLevel>& info) {
        return std::string(nameOf(info.param));
    };
}

}  // namespace test
