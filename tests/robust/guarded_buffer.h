// A value buffer that ends where an inaccessible page begins: a write or a read past its end
// faults at once, in every build.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

namespace robust {

class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size) : size_(size) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        length_ = 2 * page;
        base_ = static_cast<char *>(mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (base_ != MAP_FAILED) {
            mprotect(base_ + page, page, PROT_NONE);
            data_ = base_ + page - size;
        }
    }
    ~GuardedBuffer() {
        if (base_ != MAP_FAILED) {
            munmap(base_, length_);
        }
    }
    GuardedBuffer(const GuardedBuffer &) = delete;
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;
    char *data() const { return data_; }
    size_t size() const { return size_; }

private:
    size_t size_;
    size_t length_ = 0;
    char *base_ = static_cast<char *>(MAP_FAILED);
    char *data_ = nullptr;
};

}  // namespace robust
