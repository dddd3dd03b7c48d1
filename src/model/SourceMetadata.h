// What the file that a document came from says beyond its pixels. The model only carries it; the file code
// reads and writes it. Immutable and shared, any thread.
#pragma once

namespace orvanel {

class SourceMetadata {
 public:
  SourceMetadata(const SourceMetadata&) = delete;
  SourceMetadata& operator=(const SourceMetadata&) = delete;
  virtual ~SourceMetadata() = default;

 protected:
  SourceMetadata() = default;
};

}  // namespace orvanel
