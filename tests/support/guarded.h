// Buffers with random guard bytes on both sides. A test writes through
// data(), then checks intact(): any byte written before or after the usable
// area is a stray write. `misalign` shifts the usable area by that many
// elements' worth of bytes from a 64-byte boundary, to catch code that
// assumes alignment.
#ifndef PIXMILL_TEST_GUARDED_H
#define PIXMILL_TEST_GUARDED_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/random.h"

namespace pixmill::test {

template <class T>
class Guarded {
public:
    static constexpr size_t kGuard = 64; // bytes on each side

    Guarded() : Guarded(0) {}
    explicit Guarded(size_t count, size_t misalignBytes = 0, uint32_t seed = 0x9A7Du)
        : count_(count), offset_(kGuard + misalignBytes * sizeof(T))
    {
        storage_.resize(offset_ + count * sizeof(T) + kGuard + 64);
        Random rng(seed ^ static_cast<uint32_t>(count));
        for (auto &b : storage_)
            b = rng.byte();
        pristine_ = storage_;
    }

    T *data() { return count_ ? reinterpret_cast<T *>(base() + offset_) : nullptr; }
    const T *data() const { return count_ ? reinterpret_cast<const T *>(base() + offset_) : nullptr; }
    // A pointer that is valid even for an empty buffer (points at the guard).
    T *begin() { return reinterpret_cast<T *>(base() + offset_); }
    size_t size() const { return count_; }
    T &operator[](size_t i) { return data()[i]; }
    const T &operator[](size_t i) const { return data()[i]; }

    // Fill the usable area with random values (and remember it as the
    // reference state for untouched()).
    void randomize(Random &rng)
    {
        for (size_t i = 0; i < count_ * sizeof(T); ++i)
            base()[offset_ + i] = rng.byte();
        pristine_ = storage_;
    }
    void fill(T value)
    {
        for (size_t i = 0; i < count_; ++i)
            data()[i] = value;
        pristine_ = storage_;
    }
    // Remember the current contents as the reference state.
    void snapshot() { pristine_ = storage_; }

    // True while nothing outside [data(), data() + size()) has changed.
    bool intact() const
    {
        const size_t start = alignPad() + offset_;
        const size_t end = start + count_ * sizeof(T);
        return std::memcmp(storage_.data(), pristine_.data(), start) == 0 &&
               std::memcmp(storage_.data() + end, pristine_.data() + end, storage_.size() - end) == 0;
    }
    // Element i as it was at the last randomize/fill/snapshot.
    T before(size_t i) const
    {
        T v;
        std::memcpy(&v, pristine_.data() + alignPad() + offset_ + i * sizeof(T), sizeof(T));
        return v;
    }
    // True while the whole buffer, usable area included, is as it was.
    bool untouched() const { return storage_ == pristine_; }

    std::vector<T> contents() const { return std::vector<T>(data(), data() + count_); }

private:
    uint8_t *base() { return storage_.data() + alignPad(); }
    const uint8_t *base() const { return storage_.data() + alignPad(); }
    size_t alignPad() const
    {
        const auto addr = reinterpret_cast<uintptr_t>(storage_.data());
        return (64 - addr % 64) % 64;
    }

    size_t count_;
    size_t offset_;
    std::vector<uint8_t> storage_;
    std::vector<uint8_t> pristine_;
};

} // namespace pixmill::test

#endif
