// What every fuzz target shares: a private IPC namespace, a quiet standard output, and a reader
// that turns the fuzzer's bytes into the choices of one run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace tr104fuzz {

// Private IPC namespace (the channel keys are fixed) and, unless TR104_FUZZ_VERBOSE is set,
// standard output to /dev/null: the library prints on every refused call.
void setUp();

// Takes values from the front of the input; once it is used up every value is 0 (or empty).
class Input {
public:
    Input(const uint8_t *data, size_t size) : data_(data), size_(size) {}

    size_t left() const { return size_ - at_; }
    void skip(size_t n) { at_ += n < left() ? n : left(); }
    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    template <typename T>
    T word() {
        T v{};
        const size_t n = sizeof(T) < left() ? sizeof(T) : left();
        std::memcpy(&v, data_ + at_, n);
        at_ += n;
        return v;
    }
    // Up to max bytes (length from one byte of the input), NULs included.
    std::string text(size_t max) {
        size_t n = byte();
        n = n < max ? n : max;
        n = n < left() ? n : left();
        std::string s(reinterpret_cast<const char *>(data_ + at_), n);
        at_ += n;
        return s;
    }
    // Copies up to n bytes into dst; returns how many.
    size_t bytes(void *dst, size_t n) {
        n = n < left() ? n : left();
        std::memcpy(dst, data_ + at_, n);
        at_ += n;
        return n;
    }
    std::string rest() { return text(SIZE_MAX) + std::string(reinterpret_cast<const char *>(data_ + at_), left()); }

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

}  // namespace tr104fuzz
