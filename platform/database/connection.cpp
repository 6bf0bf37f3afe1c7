#include "platform/database/connection.h"

namespace rebate {

void Connection::ExecuteEach(std::span<const Text> texts, std::size_t& done) {
  for (done = 0; done < texts.size(); ++done) Execute(texts[done]);
}

void Connection::ExecuteFor(std::string_view text, BatchListener& listener) {
  RecordsetRef rows;
  const auto tell_messages = [&] {
    for (const Text& message : TakeMessages()) listener.Message(message);
  };
  try {
    rows = Execute(text);
  } catch (...) {
    tell_messages();
    throw;
  }
  tell_messages();
  if (rows) listener.Rows(rows);
}

}  // namespace rebate
