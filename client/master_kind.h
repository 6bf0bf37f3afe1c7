#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// A column of master data, in a file and in the account.
struct MasterColumn {
  enum class Role {
    Key,     // by which people know the row, and a row of a file finds the account's
    Plain,   // a text
    Flag,    // 0 or 1
    Rights,  // ids of users with commas around them: `,1,1001,`
    Units,   // of a goods item, in a table of their own
  };

  std::string_view title;                      // in a file
  std::string_view name;                       // in the account, and in a file, too; empty for units
  std::span<const std::string_view> synonyms;  // further titles in a file
  Role role = Role::Plain;
  bool in_item = false;  // whether t_Item bears it, too
};

// A kind of master data: its table, and the row in t_Item that goes with each of its rows.
struct MasterKind {
  std::string_view word;  // for the command line: `suppliers`
  std::string_view one;   // in a sentence: `supplier`
  std::string_view table;
  std::string_view id_name;               // of the table's key
  std::optional<Long> item_class;         // nothing where its rows are no items
  std::string_view class_name;            // under which t_ItemClass holds the class
  Long most_id;                           // the greatest id that a new row may have
  bool is_found_by_id;                    // by the id alone where a file gives it, so that the key may change
  std::span<const MasterColumn> columns;  // but for the id
};

// All kinds; nothing where there is none of that word.
std::span<const MasterKind> MasterKinds();
const MasterKind* FindMasterKind(std::string_view word);

// The title of the id in a file, and whether a title is one that stands for it.
inline constexpr std::string_view kIdTitle = "ID";
bool IsIdTitle(const MasterKind& kind, std::string_view title);
// The position of the column of that title, without regard to case; nothing where there is none.
std::optional<std::size_t> ColumnOfTitle(const MasterKind& kind, std::string_view title);

}  // namespace rebate
