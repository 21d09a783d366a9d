#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/olearray.h"

namespace tarnwick {

// An array as a host passes it in OLE array mode. It must stay where it is while it is in use.
template <class T>
class OleArray {
  public:
    OleArray(std::initializer_list<T> values) { assign(values); }
    OleArray(const OleArray&) = delete;
    OleArray& operator=(const OleArray&) = delete;

    void assign(std::vector<T> values)
    {
        data_ = std::move(values);
        header = {
            .dimensions = 1,
            .features = 0,
            .elementsize = sizeof(T),
            .locks = 0,
            .data = data_.data(),
            .bound = {static_cast<std::uint32_t>(data_.size()), 0}
        };
    }

    const std::vector<T>& values() const { return data_; }
    OleReference reference() { return &pointer; }
    T* argument() { return reinterpret_cast<T*>(&pointer); }

    SafeArray header{};
    SafeArray* pointer = &header;

  private:
    std::vector<T> data_;
};

}  // namespace tarnwick
