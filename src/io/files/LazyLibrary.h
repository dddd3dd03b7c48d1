// A shared library that is loaded on first use, so that it doesn't slow down the start. Derive a class for
// each library and make one static object of it. Any thread.
#pragma once

#include <QLibrary>
#include <QString>

namespace orvanel {

class LazyLibrary {
 public:
  /// Whether the library and all requested functions were found.
  [[nodiscard]] bool isComplete() const { return isComplete_; }

 protected:
  /// `name` without prefix and suffix; `version` is that of its binary interface.
  LazyLibrary(const QString& name, int version) : library_(name, version) {}

  template <typename Function>
  [[nodiscard]] Function* find(const char* name) {
    const QFunctionPointer address = library_.resolve(name);
    isComplete_ = isComplete_ && address != nullptr;
    return reinterpret_cast<Function*>(address);
  }

 private:
  QLibrary library_;
  bool isComplete_ = true;
};

}  // namespace orvanel
