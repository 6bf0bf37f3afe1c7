#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/emitter.h"
#include "platform/database/tsql/parser.h"

namespace rebate::tsql {
namespace {

void RefuseRepeatedNames(const CreateTable& statement) {
  for (std::size_t i = 0; i < statement.columns.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!EqualsIgnoreCase(statement.columns[i].name, statement.columns[j].name)) continue;
      RefuseStatement("Column names in each table must be unique. Column name '" + statement.columns[i].name +
                      "' in table '" + statement.table.name + "' is specified more than once.");
    }
  }
}

// The columns of a table that is being made, for the expressions of its computed ones.
Scope OwnColumns(const CreateTable& statement) {
  Scope scope;
  Source source;
  source.name = statement.table.name;
  for (const ColumnDefinition& column : statement.columns) {
    if (column.computed) continue;
    source.columns.push_back(
        {column.name, SqlName(column.name), column.type, column.nullable, IsText(column.type.kind), column.identity});
  }
  scope.sources.push_back(std::move(source));
  return scope;
}

bool IsIdentity(const TableDraft& draft, const std::vector<Text>& columns) {
  return columns.size() == 1 && std::any_of(draft.columns.begin(), draft.columns.end(), [&](const ColumnDraft& column) {
           return column.info.identity && EqualsIgnoreCase(column.info.name, columns.front());
         });
}

Text ColumnText(const ColumnDraft& column, bool temporary) {
  Text sql = SqlName(column.info.name) + ' ';
  if (column.info.identity) {
    // Numbers of a permanent table never come back; so are those that don't start at 1 kept by SQLite.
    const bool counted = !temporary || column.identity_seed != 1;
    return sql + (counted ? "INTEGER PRIMARY KEY AUTOINCREMENT" : "INTEGER PRIMARY KEY");
  }
  sql += Declaration(column.info.type);
  if (IsText(column.info.type.kind)) sql += " COLLATE " + Text(kCollation);
  if (!column.computed_sql.empty()) return sql + " GENERATED ALWAYS AS (" + column.computed_sql + ") VIRTUAL";
  if (!column.info.nullable) sql += " NOT NULL";
  if (!column.default_sql.empty()) sql += " DEFAULT (" + column.default_sql + ')';
  return sql;
}

Text IndexText(const TableInfo& table, std::string_view name, bool unique, const std::vector<Text>& columns) {
  Text sql = unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
  sql += (table.temporary ? "tempdb." : "main.") + SqlName(IndexName(table.name, name)) + " ON " + SqlName(table.name) +
         '(';
  for (const Text& column : columns) {
    if (sql.back() != '(') sql += ',';
    const ColumnInfo* info = table.FindColumn(column);
    if (info == nullptr && !table.columns.empty()) {
      RefuseStatement("Column name '" + column + "' does not exist in the target table or view.");
    }
    sql += SqlName(info != nullptr && !info->alias_of.empty() ? info->alias_of : column);
  }
  return sql + ')';
}

}  // namespace

TableDraft DraftTable(const Surroundings& surroundings, const CreateTable& statement) {
  RefuseRepeatedNames(statement);
  TableDraft draft;
  draft.name = statement.table;
  draft.keys = statement.keys;
  Command unused;
  Emitter emitter(surroundings, unused);
  emitter.InlineLiterals();
  for (const ColumnDefinition& definition : statement.columns) {
    ColumnDraft column;
    column.info = {definition.name,
                   definition.type,
                   definition.nullable && !definition.primary_key,
                   definition.identity,
                   definition.computed != nullptr,
                   {}};
    column.identity_seed = definition.identity_seed;
    if (definition.identity && !IsInteger(definition.type.kind) && definition.type.kind != TypeKind::Decimal) {
      RefuseStatement(
          "Identity column '" + definition.name +
          "' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0.");
    }
    if (definition.identity && definition.identity_step != 1) {
      RefuseStatement("An identity column that counts by other than 1 is not supported by an embedded account.");
    }
    if (definition.computed) {
      Scope scope = OwnColumns(statement);
      const Term term = emitter.EmitExpression(*definition.computed, scope);
      column.info.type = term.type;
      column.computed_sql = emitter.Render(term);
    } else if (definition.default_value) {
      Scope none;
      column.default_sql =
          emitter.ConvertTo(emitter.EmitExpression(*definition.default_value, none), definition.type, Purpose::Assign);
    }
    if (definition.primary_key) draft.keys.push_back({true, {definition.name}});
    if (definition.unique) draft.keys.push_back({false, {definition.name}});
    draft.columns.push_back(std::move(column));
  }
  for (const KeyConstraint& key : draft.keys) {
    for (const Text& name : key.columns) {
      const auto column = std::find_if(draft.columns.begin(), draft.columns.end(),
                                       [&](const ColumnDraft& c) { return EqualsIgnoreCase(c.info.name, name); });
      if (column == draft.columns.end()) {
        RefuseStatement("Column name '" + name + "' does not exist in the target table or view.");
      }
      if (key.primary) column->info.nullable = false;
    }
  }
  return draft;
}

std::vector<Text> CreateStatements(const TableDraft& draft) {
  TableInfo table;
  table.name = draft.name.name;
  table.temporary = table.name.starts_with('#');
  Text sql = "CREATE TABLE " + table.SqlName() + '(';
  std::vector<Text> statements(1);
  for (const ColumnDraft& column : draft.columns) {
    if (sql.back() != '(') sql += ',';
    sql += ColumnText(column, table.temporary);
    if (column.info.identity && column.identity_seed != 1) {
      statements.push_back("INSERT INTO " + Text(table.temporary ? "tempdb" : "main") +
                           ".sqlite_sequence(name,seq) VALUES(" + SqlString(table.name) + ',' +
                           std::to_string(column.identity_seed - 1) + ')');
    }
  }
  statements.front() = sql + ')';
  for (const KeyConstraint& key : draft.keys) {
    if (IsIdentity(draft, key.columns)) continue;
    Text name = (key.primary ? "PK_" : "UQ_") + table.name;
    if (!key.primary) {
      for (const Text& column : key.columns) name += '_' + column;
    }
    statements.push_back(IndexText(table, name, true, key.columns));
  }
  return statements;
}

std::vector<Text> CreateStatements(const CreateIndex& statement, const TableInfo& table) {
  return {IndexText(table, statement.name, statement.unique, statement.columns)};
}

Text IndexName(std::string_view table, std::string_view index) {
  return Text(table) + '.' + Text(index);
}

std::shared_ptr<const ViewDefinition> ParseView(Text source, std::vector<Text> columns) {
  auto view = std::make_shared<ViewDefinition>();
  view->source = std::move(source);
  view->columns = std::move(columns);
  ReadShape(view->source, view->shape);
  Batch batch = Parse(view->source);
  auto* statement =
      batch.statements.size() == 1 ? std::get_if<SelectStatement>(&batch.statements.front()->node) : nullptr;
  if (statement == nullptr) RefuseStatement("Incorrect syntax: a view is made of one select.");
  view->select = std::move(statement->select);
  return view;
}

void CheckView(const Surroundings& surroundings, const ViewDefinition& view, const Text& name) {
  Command unused;
  Emitter emitter({surroundings.catalog, view.shape.literals, surroundings.variables}, unused);
  emitter.InlineLiterals();
  std::vector<Emitter::Output> outputs;
  emitter.EmitSelect(*view.select, nullptr, outputs, false, true);
  if (!view.columns.empty() && view.columns.size() != outputs.size()) {
    RefuseStatement("View or function '" + name + "' has " + (view.columns.size() > outputs.size() ? "more" : "fewer") +
                    " column names specified than columns defined.");
  }
  for (std::size_t i = 0; i < outputs.size() && view.columns.empty(); ++i) {
    if (outputs[i].name.empty()) {
      RefuseStatement("Create View or Function failed because no column name was specified for column " +
                      std::to_string(i + 1) + ".");
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (!EqualsIgnoreCase(outputs[i].name, outputs[j].name)) continue;
      RefuseStatement("Column names in each view or function must be unique. Column name '" + outputs[i].name +
                      "' in view or function '" + name + "' is specified more than once.");
    }
  }
}

}  // namespace rebate::tsql
