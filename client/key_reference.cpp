#include <CLI/CLI.hpp>
#include <sstream>

#include "client/shape_check.h"
#include "client/table.h"

namespace rebate {
namespace {

std::string_view NameOf(Shape shape) {
  switch (shape) {
    case Shape::Id:
      return "integer";
    case Shape::IdList:
      return "integers";
    case Shape::Item:
      return "id or number";
    case Shape::ItemList:
      return "ids or numbers";
    case Shape::Amount:
      return "amount";
    case Shape::Text:
      return "text";
    case Shape::Flag:
      return "true or false";
    case Shape::Row:
      return "object";
    case Shape::Rows:
      return "array of objects";
    case Shape::Points:
      return "object of item ids";
    case Shape::Anything:
      return "any";
  }
  return "";
}

void AddKeys(std::span<const KeyRule> rules, const Text& indent, Table& table) {
  for (const KeyRule& rule : rules) {
    table.Add({indent + Text(rule.key), Text(NameOf(rule.shape)), rule.required ? "yes" : "", Text(rule.about)});
    AddKeys(rule.keys, indent + "  ", table);
  }
}

}  // namespace

void PrintKeys(std::span<const KeyRule> rules, std::ostream& out) {
  Table table({{"Key"}, {"What stands there"}, {"Due"}, {"What it says"}});
  AddKeys(rules, "", table);
  table.Print(out, 0);
}

void AddKeysFlag(CLI::App& verb, std::span<const KeyRule> rules) {
  const auto print = [rules] {
    std::ostringstream keys;
    PrintKeys(rules, keys);
    // It ends the run before anything else is asked for, as --version does.
    throw CLI::CallForVersion(keys.str(), 0);
  };
  verb.add_flag_callback("--keys", print, "Print what may stand in the file, key by key, and do nothing else");
}

}  // namespace rebate
