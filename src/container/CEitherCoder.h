#pragma once

#include <optional>
#include <utility>

#include "container/CoefficientDispatch.h"

namespace qmx {

/// A coder of 16-bit or of 32-bit coefficients, as the header of its image asks.
template <template <class T> class Coder>
class CEitherCoder {
public:
    /// Requires: header is supported. Throws: what the constructor of a coder throws.
    template <class... Arguments>
    CEitherCoder(const TKHeader& header, MostBitsOfShort mostBits, Arguments&&... arguments) {
        dispatchCoefficients(
            header, mostBits,
            [&]<class T>() {
                coder<T>().emplace(std::forward<Arguments>(arguments)...);
                return 0;
            },
            [] { return 0; });
    }

    /// Returns: work(coder), with the one that there is.
    template <class Work>
    auto with(Work work) {
        return ofShort ? work(*ofShort) : work(*ofInt);
    }

    /// Gives back what the coder holds. Requires: it is not used any more.
    void reset() {
        ofShort.reset();
        ofInt.reset();
    }

private:
    template <class T>
    std::optional<Coder<T>>& coder() {
        if constexpr (sizeof(T) == sizeof(short))
            return ofShort;
        else
            return ofInt;
    }

    std::optional<Coder<short>> ofShort;
    std::optional<Coder<int>> ofInt;
};

}  // namespace qmx
