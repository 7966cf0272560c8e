#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

// The save's output batch. Unlike std::string it hands out room at its end
// without filling it first, so a row's cells are copied straight in with
// fixed-size moves, and its bytes are reused from batch to batch.
class SaveBuffer {
public:
    SaveBuffer() = default;
    explicit SaveBuffer(size_t capacity) { reserve(capacity); }
    ~SaveBuffer() { std::free(data_); }
    SaveBuffer(const SaveBuffer&) = delete;
    SaveBuffer& operator=(const SaveBuffer&) = delete;
    SaveBuffer(SaveBuffer&& other) noexcept { swap(other); }
    SaveBuffer& operator=(SaveBuffer&& other) noexcept {
        swap(other);
        return *this;
    }
    void swap(SaveBuffer& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    const char* data() const { return data_; }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    void clear() { size_ = 0; }
    void reserve(size_t n) {
        if (n > capacity_) reallocate(n);
    }
    // At least n writable bytes past the end; advance() keeps what was used.
    char* room(size_t n) {
        if (Q_UNLIKELY(capacity_ - size_ < n)) reallocate(std::max(size_ + n, capacity_ * 2));
        return data_ + size_;
    }
    void advance(size_t n) { size_ += n; }

    void append(const char* p, size_t n) {
        std::memcpy(room(n), p, n);
        size_ += n;
    }
    void push_back(char c) {
        *room(1) = c;
        ++size_;
    }
    // Cuts the end (the writers drop a final delimiter this way) or grows
    // with zero bytes.
    void resize(size_t n) {
        if (n > size_) std::memset(room(n - size_), 0, n - size_);
        size_ = n;
    }

private:
    void reallocate(size_t capacity) {
        void* block = std::realloc(data_, capacity);
        if (!block) throw std::bad_alloc();
        data_ = static_cast<char*>(block);
        capacity_ = capacity;
    }

    char* data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};
