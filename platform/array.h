#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <utility>

#include "platform/memory.h"

namespace tarnwick {

inline constexpr int LINE = 8;  // doubles of a cache line of 64 bytes

// Elements of an array 0..n of doubles up to the end of its last cache line.
inline int whole_lines(int n) noexcept { return (n + LINE) / LINE * LINE; }

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

// A view of the rows 0..m of a matrix, each of the columns 0..n. Every row starts on a boundary of
// 64 bytes and is reached through a row pointer. The cells between column n and the end of a row's
// last cache line belong to the row and are zero at the start: kernels may run over whole lines.
class Matrix {
  public:
    Matrix() noexcept = default;
    Matrix(double** rows, int m, int n) noexcept : rows_(rows), m_(m), width_(whole_lines(n)) {}

    double* operator[](int i) const noexcept
    {
        assert(0 <= i && i <= m_);
        return rows_[i];
    }
    double* const* rows() const noexcept { return rows_; }
    // Row i goes behind row k, and those between move up: an exchange of pointers.
    void move_behind(int i, int k) const noexcept
    {
        assert(0 <= i && i <= k && k <= m_);
        std::rotate(rows_ + i, rows_ + i + 1, rows_ + k + 1);
    }
    void* data() const noexcept { return rows_; }  // the row pointers, for a visit
    int width() const noexcept { return width_; }  // cells of a row, whole cache lines
    explicit operator bool() const noexcept { return rows_ != nullptr; }

    // Cells from one row to the next. A long row takes an odd number of lines, so that the cells of
    // a column spread over all sets of a cache.
    static int stride_of(int n) noexcept
    {
        constexpr int LONG = 16 * LINE;
        const int width = whole_lines(n);
        return width >= LONG && width / LINE % 2 == 0 ? width + LINE : width;
    }

  private:
    double** rows_ = nullptr;
    [[maybe_unused]] int m_ = 0;  // for the assertion alone
    int width_ = 0;
};

// Owner of one block that holds many arrays and matrices, so that a record with a score of them
// costs a single allocation. The record lists them once, in a function that is run twice: first to
// add up the sizes, then to hand out the places.
//
//     block.create([&](auto& layout) { layout(x, n); layout(basis, m); layout(tableau, m, n); })
//
// gives x the elements 0..n and basis the elements 0..m, all zero. Every array starts on a boundary of
// 64 bytes and owns its last cache line whole.
class ArrayBlock {
  public:
    class Layout {
      public:
        explicit Layout(std::byte* base) noexcept : base_(base) {}

        template <class T>
        void operator()(Vec<T>& array, int n) noexcept
        {
            (*this)({&array}, n);
        }

        // Arrays of one length, one behind the other.
        template <class T>
        void operator()(std::initializer_list<Vec<T>*> arrays, int n) noexcept
        {
            const std::size_t stride = whole_line<T>(static_cast<std::size_t>(n) + 1);
            T* cells = take<T>(arrays.size() * stride);
            if (!cells) return;
            for (Vec<T>* array : arrays) {
                *array = {cells, n};
                cells += stride;
            }
        }

        void operator()(Matrix& matrix, int m, int n) noexcept
        {
            const auto count = static_cast<std::size_t>(m) + 1;
            const auto stride = static_cast<std::size_t>(Matrix::stride_of(n));
            double** const rows = take<double*>(count);
            double* const cells = take<double>(count * stride);
            if (!rows) return;
            for (std::size_t i = 0; i < count; ++i) rows[i] = cells + i * stride;
            matrix = {rows, m, n};
        }

        std::size_t bytes() const noexcept { return used_; }

      private:
        // Elements up to the end of a line.
        template <class T>
        static std::size_t whole_line(std::size_t count) noexcept
        {
            // NOLINTNEXTLINE(bugprone-sizeof-expression): an array may hold pointers.
            constexpr std::size_t BYTES = sizeof(T), ELEMENTS = LINE_BYTES / BYTES;
            static_assert(std::is_trivial_v<T> && LINE_BYTES % BYTES == 0);
            return (count + ELEMENTS - 1) / ELEMENTS * ELEMENTS;
        }

        template <class T>
        T* take(std::size_t count) noexcept
        {
            T* const place = base_ ? reinterpret_cast<T*>(base_ + used_) : nullptr;
            // NOLINTNEXTLINE(bugprone-sizeof-expression): an array may hold pointers.
            used_ += whole_line<T>(count) * sizeof(T);
            return place;
        }

        std::byte* base_;
        std::size_t used_ = 0;
    };

    // False: no memory, and the block keeps what it had.
    template <class List>
    [[nodiscard]] bool create(const List& list) noexcept
    {
        Layout sizes(nullptr);
        list(sizes);
        if (!block_.create(sizes.bytes() + LINE_BYTES)) return false;
        const auto misfit = reinterpret_cast<std::uintptr_t>(block_.data()) % LINE_BYTES;
        Layout places(block_.data() + (misfit ? LINE_BYTES - misfit : 0));
        list(places);
        return true;
    }

  private:
    static constexpr std::size_t LINE_BYTES = 64;
    Array<std::byte> block_;
};

}  // namespace tarnwick
