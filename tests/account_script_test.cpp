#include "model/account_script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "model/rebate_type.h"
#include "platform/automation/error.h"
#include "platform/database/tsql/parse/parser.h"

namespace rebate {
namespace {

using tsql::Statement;

TEST(Batches, StandBetweenLinesOfGo) {
  const struct {
    std::string_view script;
    std::vector<ScriptBatch> batches;
  } cases[] = {
      {"", {}},
      {"select 1", {{"select 1"}}},
      {"select 1\nGO\nselect 2\r\n  go \r\nselect 3\nGo", {{"select 1\n"}, {"select 2\r\n"}, {"select 3\n"}}},
      {"GO\n\n  \nGO\n\tGO\t\n", {}},
      {"select go\nlogo\ngo;\ngoto", {{"select go\nlogo\ngo;\ngoto"}}},
      {"a\nGO\n b", {{"a\n"}, {" b"}}},
      {"a\ngo 3\r\nb\nGO\t12 -- times\nc\nGO--\n", {{"a\n", 3}, {"b\n", 12}, {"c\n"}}},
      {"a '\ngo\n''\ngo x\n'\ngo\nb", {{"a '\ngo\n''\ngo x\n'\n"}, {"b"}}},
      {"/* ' /*\ngo 0\n*/ [\ngo\n*/\ngo\n[\"\ngo\n]\ngo\n-- '\ngo\nb",
       {{"/* ' /*\ngo 0\n*/ [\ngo\n*/\n"}, {"[\"\ngo\n]\n"}, {"-- '\n"}, {"b"}}},
  };
  for (const auto& c : cases) EXPECT_EQ(Batches(c.script), c.batches) << c.script;
}

TEST(Batches, RefuseGoWithAnythingButACount) {
  for (const char* count : {"0", "-1", "x", "2 3", "1.5", "99999999999", "2;"}) {
    try {
      Batches(Text("select 1\n\nGO ") + count + "\nselect 2");
      ADD_FAILURE() << count;
    } catch (const Error& error) {
      EXPECT_EQ(error.description,
                "Line 3: GO takes the number of times to run the batch, from 1 on, not '" + Text(count) + "'.");
    }
  }
}

// The statements of a script, batch by batch; a batch that doesn't parse fails the test.
std::vector<tsql::Batch> Parsed(std::string_view script) {
  std::vector<tsql::Batch> parsed;
  for (const auto& [batch, times] : Batches(script)) {
    try {
      parsed.push_back(tsql::Parse(batch));
    } catch (const Error& error) {
      ADD_FAILURE() << error.description << "\n" << batch;
    }
  }
  return parsed;
}

template <typename Node>
std::vector<const Node*> All(const std::vector<tsql::Batch>& batches) {
  std::vector<const Node*> nodes;
  for (const tsql::Batch& batch : batches) {
    for (const tsql::StatementPtr& statement : batch.statements) {
      if (const auto* node = std::get_if<Node>(&statement->node)) nodes.push_back(node);
    }
  }
  return nodes;
}

TEST(AccountSchema, IndexesAndFillsColumnsThatItsTablesHave) {
  const std::vector<tsql::Batch> schema = Parsed(AccountSchema());
  std::vector<tsql::Batch> sample = Parsed(AccountSample());
  const std::vector<const tsql::CreateTable*> tables = All<tsql::CreateTable>(schema);
  ASSERT_EQ(tables.size(), 18u);
  EXPECT_EQ(All<tsql::CreateView>(schema).size(), 2u);

  const auto expect_columns = [&](const Text& table, const std::vector<Text>& columns) {
    const auto found = std::find_if(tables.begin(), tables.end(),
                                    [&](const tsql::CreateTable* candidate) { return candidate->table.name == table; });
    ASSERT_NE(found, tables.end()) << table;
    for (const Text& column : columns) {
      EXPECT_TRUE(std::any_of((*found)->elements.columns.begin(), (*found)->elements.columns.end(),
                              [&](const tsql::ColumnDefinition& definition) { return definition.name == column; }))
          << table << "." << column;
    }
  };
  for (const tsql::CreateIndex* index : All<tsql::CreateIndex>(schema))
    expect_columns(index->table.name, index->columns);
  for (const tsql::Insert* insert : All<tsql::Insert>(schema)) expect_columns(insert->table.name, insert->columns);
  for (const tsql::Insert* insert : All<tsql::Insert>(sample)) expect_columns(insert->table.name, insert->columns);
}

// Inserts name some columns only: no other may insist on a value.
TEST(AccountSchema, AsksForNoValueButItsKeys) {
  for (const std::vector<tsql::Batch> schema = Parsed(AccountSchema());
       const auto* table : All<tsql::CreateTable>(schema)) {
    const auto& [columns, keys, checks] = table->elements;
    for (const tsql::ColumnDefinition& column : columns) {
      const bool key = std::any_of(keys.begin(), keys.end(), [&](const tsql::KeyConstraint& each) {
        return std::count(each.columns.begin(), each.columns.end(), column.name) > 0;
      });
      EXPECT_TRUE(column.nullable || key) << table->table.name << "." << column.name;
    }
  }
}

// A type's note is its name, but for one that lacks a character.
TEST(AccountSchema, OffersEveryRebateTypeTheComponentKnows) {
  const Text schema(AccountSchema());
  for (const Long first : {2040, 3020, 4020}) {
    for (Long code = first; !rebate_type::ModeName(code).empty(); ++code) {
      const std::size_t row = schema.find("(" + std::to_string(code) + ", " +
                                          (first == 2040   ? "24"
                                           : first == 3020 ? "32"
                                                           : "40"));
      ASSERT_NE(row, Text::npos) << code;
      const Text name = "N'" + Text(rebate_type::ModeName(code)) + "'";
      EXPECT_EQ(schema.substr(row, schema.find('\n', row) - row).find(name) == Text::npos, code == 3023) << code;
    }
  }
}

}  // namespace
}  // namespace rebate
