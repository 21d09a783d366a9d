#pragma once

#include <cstdint>

namespace tarnwick {

// The platform's own layout of a one-dimensional OLE array: 32 bytes with 64-bit pointers.
struct SafeArrayBound {
    std::uint32_t elements;
    std::int32_t lowerbound;
};

struct SafeArray {
    std::uint16_t dimensions;
    std::uint16_t features;
    std::uint32_t elementsize;  // bytes
    std::uint32_t locks;
    void* data;  // stands on its own alignment: padding comes before it on 64-bit platforms
    SafeArrayBound bound;
};
static_assert(sizeof(void*) != 8 || sizeof(SafeArray) == 32);
static_assert(sizeof(void*) != 4 || sizeof(SafeArray) == 24);

// In OLE array mode an array argument is a reference to a reference to such an array.
using OleReference = SafeArray**;

enum class View {
    failed,       // no such array: the argument stays as it was
    data,         // the argument is the data, at least as many elements as needed
    placeholder,  // "absent": one element that says so, where more are needed
};

// Turns an argument of OLE array mode into its data. The view succeeds when the array has one
// dimension, elements of the right size, lower bound 0, and either at least `count` elements or a
// single one that is the placeholder: -1.0, -1, or the byte 0. For numbers the argument becomes the
// address of the placeholder, for bytes it becomes null. Null references fail.
View view_array(double*& argument, std::int64_t count) noexcept;
View view_array(std::int32_t*& argument, std::int64_t count) noexcept;
View view_array(char*& argument, std::int64_t count) noexcept;

// The same for an array that must be there: a placeholder leaves the argument null, which is how an
// absent array comes outside OLE array mode. False: no such array.
template <class T>
bool view_required(T*& argument, std::int64_t count) noexcept
{
    const View view = view_array(argument, count);
    if (view == View::placeholder) argument = nullptr;
    return view != View::failed;
}

}  // namespace tarnwick
