#include "io/files/Descriptor.h"

#include <unistd.h>

namespace orvanel {

Descriptor::~Descriptor() {
  if (number_ >= 0) ::close(number_);
}

}  // namespace orvanel
