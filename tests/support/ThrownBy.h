#pragma once

namespace test {

/// Returns: the number that work throws, 0 if it throws none.
template <class Work>
int thrownBy(Work work) {
    try {
        work();
    } catch (int number) {
        return number;
    }
    return 0;
}

}  // namespace test
