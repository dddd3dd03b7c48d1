#include "Mutations.h"

#include <algorithm>
#include <cstring>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace orvanel::fuzz {

void mutateBytes(Bytes& bytes, std::size_t most) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max(most, size));
  bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
}

std::size_t handedOver(const Bytes& mutated, std::uint8_t* data, std::size_t size, std::size_t most) {
  if (mutated.empty() || mutated.size() > most) return LLVMFuzzerMutate(data, size, most);
  std::memcpy(data, mutated.data(), mutated.size());
  return mutated.size();
}

}  // namespace orvanel::fuzz
