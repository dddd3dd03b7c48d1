// What the document's file is known to hold, kept with the document for whoever reads and writes files. The
// document itself doesn't look at it.
#pragma once

namespace orvanel {

class FileMemory {
 public:
  virtual ~FileMemory() = default;

 protected:
  FileMemory() = default;
  FileMemory(const FileMemory&) = default;
  FileMemory& operator=(const FileMemory&) = default;
};

}  // namespace orvanel
