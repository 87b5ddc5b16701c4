#pragma once

#include <cfenv>

namespace qmx {

/// While it lives, its thread rounds to nearest and floating-point exceptions do not stop it; then all
/// is as the caller had it. Section priorities decide the bytes of a stream, so they must not depend
/// on the caller. Format: docs/format.md, 12.1 Priority.
class CNearestRounding {
public:
    CNearestRounding() {
        std::feholdexcept(&environment);
        std::fesetround(FE_TONEAREST);
    }
    ~CNearestRounding() { std::fesetenv(&environment); }
    CNearestRounding(const CNearestRounding&) = delete;
    CNearestRounding& operator=(const CNearestRounding&) = delete;

private:
    std::fenv_t environment;
};

}  // namespace qmx
