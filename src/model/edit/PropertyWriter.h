// Write access to properties. Private to the model: `DocumentEdit` uses it and reports what it wrote.
#pragma once

#include <type_traits>
#include <utility>

#include "model/Property.h"

namespace orvanel {

class PropertyWriter {
 public:
  /// Stores the value; returns false and writes nothing if it equals the current one.
  template <typename T>
  static bool write(Property<T>& property, std::type_identity_t<T> value) {
    if (property.value_ == value) return false;
    property.value_ = std::move(value);
    return true;
  }
};

}  // namespace orvanel
