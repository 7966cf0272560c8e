#pragma once

#include <QtGlobal>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

// A vector for types that may be moved by copying their bytes and whose
// all-zero bit pattern is a valid empty value (Cell, and this vector itself).
// That lets growth use realloc, which for large blocks remaps pages instead of
// copying them, so a store of millions of rows never holds two copies of its
// row handles, and inserting a row is one memmove of 16-byte handles.
// Sizes are 32-bit like the row and column numbers they index.
template <class T> class RelocatableVector {
public:
    RelocatableVector() noexcept = default;
    RelocatableVector(const RelocatableVector& other) { *this = other; }
    RelocatableVector(RelocatableVector&& other) noexcept
        : data_(other.data_), size_(other.size_), capacity_(other.capacity_) {
        other.data_ = nullptr;
        other.size_ = other.capacity_ = 0;
    }
    ~RelocatableVector() {
        destroy(0, size_);
        std::free(data_);
    }
    RelocatableVector& operator=(const RelocatableVector& other) {
        if (this == &other) return *this;
        clear();
        reserveExact(other.size_);
        for (uint32_t i = 0; i < other.size_; ++i)
            new (data_ + i) T(other.data_[i]);
        size_ = other.size_;
        return *this;
    }
    RelocatableVector& operator=(RelocatableVector&& other) noexcept {
        if (this == &other) return *this;
        destroy(0, size_);
        std::free(data_);
        data_ = other.data_;
        size_ = other.size_;
        capacity_ = other.capacity_;
        other.data_ = nullptr;
        other.size_ = other.capacity_ = 0;
        return *this;
    }

    int size() const noexcept { return int(size_); }
    bool empty() const noexcept { return size_ == 0; }
    int capacity() const noexcept { return int(capacity_); }
    T& operator[](int i) noexcept { return data_[i]; }
    const T& operator[](int i) const noexcept { return data_[i]; }
    T* begin() noexcept { return data_; }
    T* end() noexcept { return data_ + size_; }
    const T* begin() const noexcept { return data_; }
    const T* end() const noexcept { return data_ + size_; }
    T& back() noexcept { return data_[size_ - 1]; }

    void clear() noexcept {
        destroy(0, size_);
        size_ = 0;
    }
    void reserveExact(int n) {
        if (uint32_t(n) > capacity_) reallocate(uint32_t(n));
    }
    void shrinkToFit() {
        if (size_ == capacity_) return;
        if (size_ == 0) {
            std::free(data_);
            data_ = nullptr;
            capacity_ = 0;
            return;
        }
        reallocate(size_);
    }
    // Grows with empty values or cuts (destroying what is cut).
    void resize(int n) {
        uint32_t m = uint32_t(n);
        if (m < size_) {
            destroy(m, size_);
        } else if (m > size_) {
            grow(m);
            std::memset(static_cast<void*>(data_ + size_), 0, sizeof(T) * (m - size_));
        }
        size_ = m;
    }
    void push_back(T&& value) {
        if (size_ == capacity_) grow(size_ + 1);
        new (data_ + size_) T(std::move(value));
        ++size_;
    }
    // Inlined into the readers' per-field paths, with the growth out of line.
    template <class... Args> Q_ALWAYS_INLINE void emplace_back(Args&&... args) {
        if (Q_UNLIKELY(size_ == capacity_)) grow(size_ + 1);
        new (data_ + size_) T(std::forward<Args>(args)...);
        ++size_;
    }
    // Opens `count` empty slots at `pos` (pos <= size).
    void insertEmpty(int pos, int count) {
        uint32_t p = uint32_t(pos), c = uint32_t(count);
        grow(size_ + c);
        std::memmove(static_cast<void*>(data_ + p + c), data_ + p, sizeof(T) * (size_ - p));
        std::memset(static_cast<void*>(data_ + p), 0, sizeof(T) * c);
        size_ += c;
    }
    void erase(int pos, int count) {
        uint32_t p = uint32_t(pos), c = uint32_t(count);
        destroy(p, p + c);
        std::memmove(static_cast<void*>(data_ + p), data_ + p + c, sizeof(T) * (size_ - p - c));
        size_ -= c;
    }

    // Moves every element into `dst` (which must be empty) with an exactly
    // sized block, keeping this vector's capacity for reuse.
    void relocateInto(RelocatableVector& dst) {
        dst.clear();
        dst.reserveExact(int(size_));
        if (size_) std::memcpy(static_cast<void*>(dst.data_), data_, sizeof(T) * size_);
        dst.size_ = size_;
        size_ = 0;
    }

    // Moves every element to the end of `dst`, leaving this vector empty.
    void relocateAppendTo(RelocatableVector& dst) {
        if (size_ == 0) return;
        dst.grow(dst.size_ + size_);
        std::memcpy(static_cast<void*>(dst.data_ + dst.size_), data_, sizeof(T) * size_);
        dst.size_ += size_;
        size_ = 0;
    }

private:
    void destroy(uint32_t from, uint32_t to) noexcept {
        for (uint32_t i = from; i < to; ++i)
            data_[i].~T();
    }
    Q_NEVER_INLINE void grow(uint32_t needed) {
        if (needed <= capacity_) return;
        uint64_t next = uint64_t(capacity_) + capacity_ / 2;
        if (next < needed) next = needed;
        if (next < 4) next = 4;
        if (next > UINT32_MAX) next = UINT32_MAX;
        reallocate(uint32_t(next));
    }
    void reallocate(uint32_t capacity) {
        void* block = std::realloc(static_cast<void*>(data_), sizeof(T) * size_t(capacity));
        if (!block && capacity) throw std::bad_alloc();
        data_ = static_cast<T*>(block);
        capacity_ = capacity;
    }

    T* data_ = nullptr;
    uint32_t size_ = 0;
    uint32_t capacity_ = 0;
};
