#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>

#include "platform/memory.h"

namespace tarnwick {

// A view of the elements 0..n of an array. The mathematics runs over 1..n; element 0 is idle, or
// used as the engine's record says. Copy it freely, never store it beyond the owner's life.
template <class T>
class Vec {
  public:
    Vec() noexcept = default;
    Vec(T* cell0, int n) noexcept : cells_(cell0), n_(n) {}

    T& operator[](int i) const noexcept
    {
        assert(0 <= i && i <= n_);
        return cells_[i];
    }
    int size() const noexcept { return n_; }
    T* data() const noexcept { return cells_; }
    T* first() const noexcept { return cells_ ? cells_ + 1 : nullptr; }  // what services get
    explicit operator bool() const noexcept { return cells_ != nullptr; }
    operator Vec<const T>() const noexcept { return {cells_, n_}; }

  private:
    T* cells_ = nullptr;
    int n_ = 0;
};

// Owner of n zero-filled elements, 0-based. Zero elements are a null block, which is no failure.
template <class T>
class Array {
    static_assert(std::is_trivial_v<T>, "elements start as zero bytes and are never constructed");

  public:
    Array() noexcept = default;
    Array(Array&& other) noexcept : cells_(std::exchange(other.cells_, nullptr)) {}
    Array& operator=(Array&& other) noexcept
    {
        std::swap(cells_, other.cells_);
        return *this;
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { release_block(cells_); }

    // Replaces the content by n zeros. False: no memory, and the array keeps what it had.
    [[nodiscard]] bool create(std::size_t n) noexcept
    {
        auto* const cells = static_cast<T*>(allocate_block(n * sizeof(T)));
        if (!cells && n > 0) return false;
        release_block(std::exchange(cells_, cells));
        return true;
    }
    void release() noexcept { release_block(std::exchange(cells_, nullptr)); }

    T* data() const noexcept { return cells_; }
    T& operator[](std::size_t i) const noexcept { return cells_[i]; }
    explicit operator bool() const noexcept { return cells_ != nullptr; }

  private:
    T* cells_ = nullptr;
};

// Owner of one block that holds many arrays, so that a record with a score of them costs a single
// allocation. The record lists its arrays once, in a function that is run twice: first to add up
// the sizes, then to hand out the places.
//
//     block.create([&](auto& layout) { layout(x, n); layout(basis, m); })
//
// gives x the elements 0..n and basis the elements 0..m, all zero.
class ArrayBlock {
  public:
    class Layout {
      public:
        explicit Layout(std::byte* base) noexcept : base_(base) {}

        template <class T>
        void operator()(Vec<T>& array, int n) noexcept
        {
            static_assert(std::is_trivial_v<T> && alignof(T) <= ALIGNMENT);
            if (base_) array = {reinterpret_cast<T*>(base_ + used_), n};
            const std::size_t bytes = (static_cast<std::size_t>(n) + 1) * sizeof(T);
            used_ += (bytes + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
        }
        std::size_t bytes() const noexcept { return used_; }

      private:
        static constexpr std::size_t ALIGNMENT = 16;
        std::byte* base_;
        std::size_t used_ = 0;
    };

    template <class List>
    [[nodiscard]] bool create(const List& list) noexcept
    {
        Layout sizes(nullptr);
        list(sizes);
        if (!block_.create(sizes.bytes())) return false;
        Layout places(block_.data());
        list(places);
        return true;
    }

  private:
    Array<std::byte> block_;
};

// Owner of the rows 0..m, each of the columns 0..n, all zero. The rows lie in one block, each on a
// boundary of 64 bytes, and are reached through row pointers. The cells between column n and the
// end of a row belong to the row: kernels may run over whole cache lines.
class Matrix {
  public:
    // Replaces the content. False: no memory, and the matrix keeps what it had.
    [[nodiscard]] bool create(int m, int n) noexcept
    {
        const std::size_t rows = static_cast<std::size_t>(m) + 1;
        const std::size_t stride = row_stride(n);
        Array<double*> pointers;
        Array<double> cells;
        if (!pointers.create(rows) || !cells.create(rows * stride + LINE)) return false;

        const auto misfit = reinterpret_cast<std::uintptr_t>(cells.data()) % LINE_BYTES;
        double* row = cells.data() + (misfit ? (LINE_BYTES - misfit) / sizeof(double) : 0);
        for (std::size_t i = 0; i < rows; ++i, row += stride) pointers[i] = row;

        rows_ = std::move(pointers);
        cells_ = std::move(cells);
        m_ = m;
        stride_ = static_cast<int>(stride);
        return true;
    }

    double* operator[](int i) const noexcept
    {
        assert(0 <= i && i <= m_);
        return rows_[static_cast<std::size_t>(i)];
    }
    int stride() const noexcept { return stride_; }  // cells from one row to the next
    explicit operator bool() const noexcept { return static_cast<bool>(rows_); }

  private:
    static constexpr std::size_t LINE_BYTES = 64;
    static constexpr std::size_t LINE = LINE_BYTES / sizeof(double);

    // Whole lines; an odd number of them, so that a column's cells spread over all cache sets.
    static std::size_t row_stride(int n) noexcept
    {
        const std::size_t lines = (static_cast<std::size_t>(n) + LINE) / LINE;
        return (lines | 1) * LINE;
    }

    Array<double*> rows_;
    Array<double> cells_;
    int m_ = 0;
    int stride_ = 0;
};

}  // namespace tarnwick
