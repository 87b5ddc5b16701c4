#pragma once

#include <unistd.h>
#include <utility>

namespace qmx {

/// Owns the number of an open file.
class CFileNumber {
public:
    explicit CFileNumber(int fileNumber) : number(fileNumber) {}
    CFileNumber(CFileNumber&& other) noexcept : number(std::exchange(other.number, -1)) {}
    CFileNumber& operator=(CFileNumber&&) = delete;
    ~CFileNumber() {
        if (number >= 0) close(number);
    }

    int get() const { return number; }
    /// Returns: the number, which the caller owns from now on.
    int release() { return std::exchange(number, -1); }

private:
    int number;
};

}  // namespace qmx
