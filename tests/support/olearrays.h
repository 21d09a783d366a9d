#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "interface/problem.h"
#include "platform/olearray.h"

namespace tarnwick {

// OLE array mode, or the plain mode, as long as it lives.
class ArrayMode {
  public:
    explicit ArrayMode(bool is_ole) { setintparam(nullptr, PARAM_OLEARRAYS, is_ole); }
    ~ArrayMode() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }
    ArrayMode(const ArrayMode&) = delete;
    ArrayMode& operator=(const ArrayMode&) = delete;
};

// An array of a host's, which passes it as the mode of the moment wants it. It must stay where it is
// while it is in use.
template <class T>
class OleArray {
  public:
    OleArray(std::initializer_list<T> values) { assign(values); }
    OleArray(const OleArray&) = delete;
    OleArray& operator=(const OleArray&) = delete;

    void assign(std::vector<T> values)
    {
        data_ = std::move(values);
        const auto count = static_cast<std::uint32_t>(data_.size());
        header = {
            1, 0, sizeof(T), 0, data_.data(), {count, 0}
        };
    }
    // From now on this is passed instead.
    void replace(T* by)
    {
        is_replaced_ = true;
        replacement_ = by;
    }

    const std::vector<T>& values() const { return data_; }
    T& operator[](std::size_t k) { return data_[k]; }
    OleReference reference() { return &pointer; }
    T* argument() { return reinterpret_cast<T*>(&pointer); }
    T* pass()
    {
        if (is_replaced_) return replacement_;
        return ole_mode() ? argument() : data_.data();
    }

    SafeArray header{};
    SafeArray* pointer = &header;

  private:
    std::vector<T> data_;
    bool is_replaced_ = false;
    T* replacement_ = nullptr;
};

}  // namespace tarnwick
