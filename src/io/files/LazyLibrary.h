// A shared library that is loaded when something first needs it, so that no start pays for it. Its functions
// are found by name. Make one static object of a derived class for each library; any thread.
#pragma once

#include <QLibrary>
#include <QString>

namespace orvanel {

class LazyLibrary {
 public:
  /// Whether the library and all functions asked for are there.
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
