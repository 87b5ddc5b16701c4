#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace test {

/// Where an array stands between two pages that may not be touched: it ends at the second one, or begins
/// behind the first one.
enum class Side { atEnd, atStart };
inline constexpr Side kBothSides[] = {Side::atEnd, Side::atStart};

inline const char* nameOf(Side side) {
    return side == Side::atEnd ? "at the end" : "at the start";
}

/// Whole pages between two pages that may not be touched.
class GuardedRoom {
public:
    explicit GuardedRoom(std::size_t leastBytes) {
        const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        roomBytes = (leastBytes + pageBytes - 1) / pageBytes * pageBytes;
        mappedBytes = roomBytes + 2 * pageBytes;
        mapped = mmap(nullptr, mappedBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) throw std::bad_alloc();
        room = static_cast<unsigned char*>(mapped) + pageBytes;
        if (roomBytes != 0) mprotect(room, roomBytes, PROT_READ | PROT_WRITE);
    }
    ~GuardedRoom() { munmap(mapped, mappedBytes); }
    GuardedRoom(const GuardedRoom&) = delete;
    GuardedRoom& operator=(const GuardedRoom&) = delete;

    unsigned char* begin() const { return room; }
    unsigned char* end() const { return room + roomBytes; }
    /// Returns: where an array of sizeBytes bytes stands in the room.
    unsigned char* place(std::size_t sizeBytes, Side side) const {
        return side == Side::atEnd ? end() - sizeBytes : begin();
    }

private:
    std::size_t roomBytes;
    std::size_t mappedBytes;
    void* mapped;
    unsigned char* room;
};

/// A room for as long as this object lives. To make one takes 7 microseconds (2026-11-21), more than most tests
/// do with it, so that rooms go from hand to hand, with what was left in them.
class BorrowedRoom {
public:
    explicit BorrowedRoom(std::size_t leastBytes) {
        const auto smallest = spareRooms.lower_bound(leastBytes);
        if (smallest == spareRooms.end()) {
            room = std::make_unique<GuardedRoom>(leastBytes);
        } else {
            room = std::move(smallest->second);
            spareRooms.erase(smallest);
        }
    }
    ~BorrowedRoom() {
        const auto sizeBytes = static_cast<std::size_t>(room->end() - room->begin());
        spareRooms.emplace(sizeBytes, std::move(room));
    }
    BorrowedRoom(const BorrowedRoom&) = delete;
    BorrowedRoom& operator=(const BorrowedRoom&) = delete;

    const GuardedRoom* operator->() const { return room.get(); }

private:
    static inline std::multimap<std::size_t, std::unique_ptr<GuardedRoom>> spareRooms;

    std::unique_ptr<GuardedRoom> room;
};

/// An array that no access may leave, not by one byte, at one of its sides.
template <class T>
class GuardedBuffer {
public:
    GuardedBuffer(const std::vector<T>& samples, Side side)
        : count(samples.size()),
          room(count * sizeof(T)),
          first(reinterpret_cast<T*>(room->place(count * sizeof(T), side))) {
        std::copy(samples.begin(), samples.end(), first);
    }

    T* data() const { return first; }
    std::vector<T> samples() const { return std::vector<T>(first, first + count); }

private:
    std::size_t count;
    BorrowedRoom room;
    T* first;
};

}  // namespace test
