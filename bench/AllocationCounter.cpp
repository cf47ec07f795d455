#include "AllocationCounter.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {
// Plain counters: the solver is single-threaded, and atomic updates would
// make every allocation of the measured code noticeably dearer than it is
// in the program itself.
std::uint64_t allocations = 0;
std::int64_t liveBytes = 0;
std::int64_t peakBytes = 0;

void* allocate(std::size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    ++allocations;
    liveBytes += static_cast<std::int64_t>(malloc_usable_size(p));
    if (liveBytes > peakBytes) peakBytes = liveBytes;
    return p;
}

void* allocateAligned(std::size_t size, std::align_val_t align) {
    const std::size_t alignment = static_cast<std::size_t>(align);
    // aligned_alloc wants a size that is a multiple of the alignment.
    const std::size_t rounded = ((size ? size : 1) + alignment - 1) / alignment * alignment;
    void* p = std::aligned_alloc(alignment, rounded);
    if (!p) throw std::bad_alloc();
    ++allocations;
    liveBytes += static_cast<std::int64_t>(malloc_usable_size(p));
    if (liveBytes > peakBytes) peakBytes = liveBytes;
    return p;
}

void release(void* p) noexcept {
    if (!p) return;
    liveBytes -= static_cast<std::int64_t>(malloc_usable_size(p));
    std::free(p);
}
} // namespace

namespace allocation {
Snapshot snapshot() {
    return {allocations, liveBytes, peakBytes};
}
void resetPeak() {
    peakBytes = liveBytes;
}
} // namespace allocation

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
// Over-aligned types come through the aligned forms: counted the same way.
void* operator new(std::size_t size, std::align_val_t align) {
    return allocateAligned(size, align);
}
void* operator new[](std::size_t size, std::align_val_t align) {
    return allocateAligned(size, align);
}
void* operator new(std::size_t size, std::align_val_t align, const std::nothrow_t&) noexcept {
    try {
        return allocateAligned(size, align);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, std::align_val_t align, const std::nothrow_t&) noexcept {
    try {
        return allocateAligned(size, align);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* p, std::align_val_t) noexcept {
    release(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    release(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    release(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    release(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    release(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    release(p);
}
void operator delete(void* p) noexcept {
    release(p);
}
void operator delete[](void* p) noexcept {
    release(p);
}
void operator delete(void* p, std::size_t) noexcept {
    release(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    release(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    release(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    release(p);
}
