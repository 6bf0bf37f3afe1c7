#include "client/sql_batch.h"

#include <algorithm>
#include <sstream>

#include "client/tool.h"
#include "model/account_script.h"

namespace rebate {
namespace {

bool IsForPrograms(RowForm form) {
  return form == RowForm::Json || form == RowForm::Csv;
}

// Writes down what a batch gives and says: it is shown behind the batch, so that no lock waits for a reader.
class Transcript : public BatchListener {
 public:
  Transcript(const SqlView& view, const Tool& tool) : view_(view), width_(tool.width) {}

  void Rows(RecordsetRef rows) override {
    if (!view_.whole && has_rows_) return;
    has_rows_ = true;
    PrintRows(*rows, view_.form, text_, width_);
  }
  void Affected(std::int64_t count) override {
    if (!view_.whole) return;
    Said() << '(' << count << (count == 1 ? " row" : " rows") << " affected)\n";
  }
  void Message(const Text& message) override { Said() << message << '\n'; }

  // Messages stand before the rows where not all of it is shown in its order.
  void Show(Tool& tool) {
    if (const Text said = messages_.str(); !said.empty()) (IsForPrograms(view_.form) ? tool.err : tool.out) << said;
    if (const Text text = text_.str(); !text.empty()) PrintLong(text, tool);
  }

 private:
  std::ostream& Said() { return view_.whole && !IsForPrograms(view_.form) ? text_ : messages_; }

  SqlView view_;
  std::size_t width_;
  bool has_rows_ = false;
  std::ostringstream text_;
  std::ostringstream messages_;
};

void RunOnce(Connection& connection, std::string_view text, const SqlView& view, Tool& tool) {
  Transcript transcript(view, tool);
  connection.BeginWork();
  try {
    connection.ExecuteFor(text, transcript);
    connection.CommitWork();
  } catch (...) {
    connection.RollbackWork();
    transcript.Show(tool);
    throw;
  }
  transcript.Show(tool);
}

}  // namespace

void ShowBatch(Connection& connection, const ScriptBatch& batch, const SqlView& view, Tool& tool) {
  for (std::size_t run = 0; run < batch.times; ++run) RunOnce(connection, batch.text, view, tool);
}

void PrintLong(const Text& text, Tool& tool) {
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  if (tool.height > 0 && lines + 1 >= tool.height && tool.page && tool.page(text)) return;
  tool.out << text;
}

}  // namespace rebate
