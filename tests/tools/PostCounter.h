// Counts the posts of one notification while it lives.
#pragma once

#include <any>
#include <string_view>

#include "tools/NotificationCenter.h"

namespace orvanel::test {

class PostCounter {
 public:
  explicit PostCounter(std::string_view name)
      : subscription_(NotificationCenter::standard().observe(name, [this](const std::any& object) {
          ++count;
          hadObject = object.has_value();
        })) {}
  PostCounter(const PostCounter&) = delete;
  PostCounter& operator=(const PostCounter&) = delete;

  int count = 0;
  bool hadObject = false;

 private:
  NotificationCenter::Subscription subscription_;
};

}  // namespace orvanel::test
