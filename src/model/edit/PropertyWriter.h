// The write access to properties. Private to the model: `DocumentEdit` uses it and tells of what it wrote.
#pragma once

#include <type_traits>
#include <utility>

#include "model/Property.h"

namespace orvanel {

class PropertyWriter {
 public:
  /// Stores the value; false, and nothing written, when it equals the one that stands.
  template <typename T>
  static bool write(Property<T>& property, std::type_identity_t<T> value) {
    if (property.value_ == value) return false;
    property.value_ = std::move(value);
    return true;
  }
};

}  // namespace orvanel
