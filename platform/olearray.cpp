#include "platform/olearray.h"

namespace tarnwick {

namespace {

const SafeArray* one_dimensional(const void* argument, std::uint32_t elementsize) noexcept
{
    const auto reference = static_cast<SafeArray* const*>(argument);
    if (!reference || !*reference) return nullptr;
    const SafeArray* const array = *reference;
    const bool fits = array->dimensions == 1 && array->elementsize == elementsize &&
                      array->bound.lowerbound == 0 && (array->data || array->bound.elements == 0);
    return fits ? array : nullptr;
}

// A single null byte means "absent" even where one byte is all that is needed.
template <class T>
View view(T*& argument, std::int64_t count, T placeholder) noexcept
{
    constexpr bool IS_BYTE = sizeof(T) == 1;
    const SafeArray* const array = one_dimensional(argument, sizeof(T));
    if (!array) return View::failed;
    auto* const data = static_cast<T*>(array->data);
    const bool is_long_enough = array->bound.elements >= count;
    const bool is_placeholder = array->bound.elements == 1 && *data == placeholder;
    if (!is_long_enough && !is_placeholder) return View::failed;
    argument = IS_BYTE && is_placeholder ? nullptr : data;
    return is_long_enough && !(IS_BYTE && is_placeholder) ? View::data : View::placeholder;
}

}  // namespace

View view_array(double*& argument, std::int64_t count) noexcept
{
    return view(argument, count, -1.0);
}

View view_array(std::int32_t*& argument, std::int64_t count) noexcept
{
    return view(argument, count, std::int32_t{-1});
}

View view_array(char*& argument, std::int64_t count) noexcept
{
    return view(argument, count, '\0');
}

}  // namespace tarnwick
