// A value of the document model that anyone may read. Only the model's own edits write it, and every write is
// reported in the document's stream of changes. Main thread only.
#pragma once

#include <utility>

namespace orvanel {

template <typename T>
class Property {
 public:
  Property() = default;
  explicit Property(T initial) : value_(std::move(initial)) {}
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;

  [[nodiscard]] const T& value() const { return value_; }

 private:
  friend class PropertyWriter;
  T value_{};
};

}  // namespace orvanel
