#include "tests/test_account.h"

#include <gtest/gtest.h>

#include "model/account_script.h"
#include "platform/automation/conversion.h"
#include "platform/database/connect.h"
#include "platform/database/error_numbers.h"

namespace rebate {
namespace {

DataSource SourceOf(const Text& path) {
  return DataSource::Parse("Data Source=" + path);
}

// An account is made once and then copied: the schema takes longer than most tests.
const Text& TemplateAccount() {
  struct Template {
    ScratchFolder folder;
    Text path = folder.File("template.db");
    Template() {
      const ConnectionRef connection = ConnectForSetup(SourceOf(path));
      for (const ScriptBatch& batch : AccountBatches(true)) connection->Execute(batch.text);
    }
  };
  static const Template made;
  return made.path;
}

}  // namespace

TestAccount::TestAccount() : path_(folder_.File("shop.db")) {
  std::filesystem::copy_file(files::ToPath(TemplateAccount()), files::ToPath(path_));
}

void TestAccount::Execute(std::string_view text) const {
  Connect(SourceOf(path_))->Execute(text);
}

Text TestAccount::Rows(std::string_view query) const {
  const RecordsetRef rows = Connect(SourceOf(path_))->Execute(query);
  Text text;
  for (; !rows->Eof(); rows->MoveNext()) {
    if (!text.empty()) text += "\n";
    for (std::size_t i = 0; i < rows->FieldCount(); ++i) {
      const Variant value = rows->FieldValue(i);
      text += (i == 0 ? "" : "|") + (value.IsNull() ? "NULL" : ToText(value));
    }
  }
  return text;
}

Text TestAccount::Everything() const {
  Text text;
  for (const char* table : {"t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllOrgs", "t_FL_AllItems",
                            "t_FL_CheckItems", "t_ItemSelect", "t_FL_SchemeLink"}) {
    text += Text(table) + "\n" + Rows("select * from " + Text(table)) + "\n";
  }
  return text;
}

std::vector<Text> Trace::TakeStatements() {
  std::vector<Text> statements;
  for (Text& event : events_) {
    if (event != "open" && event != "abort" && event != "connection" && event != "complete") {
      statements.push_back(std::move(event));
    }
  }
  events_.clear();
  return statements;
}

void Trace::VotingComplete() {
  events_.push_back("complete");
  if (std::exchange(refuses_commit_, false)) Refuse();
}

void Trace::Executing(std::string_view text) {
  events_.emplace_back(text);
  if (++statements_ == refused_) Refuse();
}

void Trace::Refuse() {
  throw Error(database_error::kStatement, "Test", "Refused by the test.");
}

void ExpectAllOrNothing(const TestAccount& account, const std::function<bool()>& operation) {
  const Text before = account.Everything();
  Trace trace;
  for (int n = 1; n < 200; ++n) {
    trace.RefuseStatement(n);
    const bool done = operation();
    if (trace.statements() < n) {
      EXPECT_TRUE(done);
      EXPECT_GT(n, 1) << "the operation sent no statement";
      return;
    }
    EXPECT_FALSE(done) << "statement " << n;
    ASSERT_EQ(account.Everything(), before) << "statement " << n;
  }
  FAIL() << "the operation never ran through";
}

Ref<Dictionary> Row(std::initializer_list<std::pair<const char*, Variant>> entries) {
  Ref<Dictionary> row = New<Dictionary>();
  for (const auto& [key, value] : entries) row->SetValue(key, value);
  return row;
}

Ref<Vector> List(std::initializer_list<Variant> items) {
  Ref<Vector> list = New<Vector>();
  for (const Variant& item : items) list->Add(item);
  return list;
}

}  // namespace rebate
