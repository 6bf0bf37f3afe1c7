#pragma once

#include <gtest/gtest.h>

#include "model/account_script.h"
#include "platform/automation/conversion.h"
#include "platform/database/embedded/embedded_account.h"
#include "tests/scratch_folder.h"

namespace rebate {

// A new account in a directory of its own, which goes with the test.
class EmbeddedTest : public testing::Test {
 protected:
  EmbeddedTest() : path_(folder_.File("account.db")), account_(CreateEmbedded(path_)) {}

  void Run(std::string_view text) { account_->Execute(text); }

  // The rows as text, their values with ',' and the rows with ';' between them; Null as NULL, "none" without a row set.
  Text Rows(std::string_view text) { return RowsOn(*account_, text); }
  static Text RowsOn(Connection& connection, std::string_view text) {
    const RecordsetRef rows = connection.Execute(text);
    if (!rows) return "none";
    Text all;
    for (; !rows->Eof(); rows->MoveNext()) {
      if (!all.empty()) all += ';';
      for (std::size_t field = 0; field < rows->FieldCount(); ++field) {
        if (field > 0) all += ',';
        const Variant value = rows->FieldValue(field);
        all += value.IsNull() ? "NULL" : ToText(value);
      }
    }
    return all;
  }

  // The error that the text is refused with; number 0 where it isn't.
  Error Refusal(std::string_view text) { return RefusalOn(*account_, text); }
  static Error RefusalOn(Connection& connection, std::string_view text) {
    try {
      connection.Execute(text);
    } catch (const Error& error) {
      return error;
    }
    return Error(0, "", "");
  }

  void MakeSchema() {
    for (const ScriptBatch& batch : AccountBatches(true)) Run(batch.text);
  }

  ScratchFolder folder_;
  Text path_;
  ConnectionRef account_;
};

}  // namespace rebate
