#pragma once

#include <fstream>

#include "platform/values/types.h"

namespace rebate {

// A file that is written whole or not at all: what stood at its path stays there until Finish().
class OutputFile {
 public:
  // Raises 5, naming the path, where it can't be written.
  explicit OutputFile(Text path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  std::ostream& stream() { return stream_; }
  // Puts the file in its place. Raises 5 where not all of it could be written.
  void Finish();

 private:
  [[noreturn]] void Fail() const;

  Text path_;     // as it was named
  Text target_;   // to which a link of that name leads
  Text writing_;  // the same where the path is a device
  std::ofstream stream_;
};

}  // namespace rebate
