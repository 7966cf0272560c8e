// Counts heap allocations of the whole process, Qt's included, for the
// commands that report allocations per operation. glibc's own entry points
// do the work; the count costs one relaxed load while it is switched off.

#include "mallochook.h"

#include <atomic>
#include <cstddef>

namespace {
std::atomic<bool> counting{false};
std::atomic<long long> allocations{0};
} // namespace

void setAllocationCounting(bool on) {
    counting.store(on, std::memory_order_relaxed);
}

long long allocationCount() {
    return allocations.load(std::memory_order_relaxed);
}

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* p, size_t size);
void __libc_free(void* p);

void* malloc(size_t size) {
    if (counting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    if (counting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}

void* realloc(void* p, size_t size) {
    if (counting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(p, size);
}

void free(void* p) {
    __libc_free(p);
}
}
