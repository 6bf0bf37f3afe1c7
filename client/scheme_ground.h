#pragma once

#include <map>
#include <unordered_map>
#include <vector>

#include "platform/database/connection.h"

namespace rebate {

// Organisations by their ids, sorted, single ones and whole classes.
struct Organisations {
  std::vector<Long> items;
  std::vector<Long> classes;

  void Add(const Organisations& other);
  void Sort();
};

// A row of t_FL_AllOrgs and of t_FL_AllItems.
struct OrganisationRow {
  Long id;
  Long row;
  Long item_class;
  Long item;
};
struct GoodsRow {
  Long id;
  Long row;
  Long item;
};
Organisations OrganisationsOf(const OrganisationRow& row);

// What one grid row of a scheme covers: each of its organisations with each of its goods, both sorted.
struct GroundRow {
  Long number = 0;
  Organisations organisations;
  std::vector<Long> goods;
};

// What a scheme covers.
struct SchemeGround {
  Long id = 0;
  Long rebate_type = 0;
  std::vector<OrganisationRow> organisation_rows;
  std::vector<GoodsRow> goods_rows;
  std::vector<GroundRow> rows;
  Organisations organisations;  // of all rows
  std::vector<Long> goods;
};

// The enabled schemes of a type that name organisations, by their ids, the lowest first.
std::vector<SchemeGround> ReadGround(Connection& connection, Long rebate_type);

// The items of the classes that enabled schemes name as a whole.
class ItemClasses {
 public:
  static ItemClasses Read(Connection& connection);

  // The classes that hold an item of the id.
  const std::vector<Long>& Holding(Long item) const;
  // The classes that have an item's id in common with this one; an empty one has none, not even with itself.
  const std::vector<Long>& Meeting(Long item_class) const;
  // Whether both stand for an organisation of the same id.
  bool Meet(const Organisations& left, const Organisations& right) const;

 private:
  bool IsHeldBy(Long item, const std::vector<Long>& classes) const;

  std::unordered_map<Long, std::vector<Long>> holding_;
  std::map<Long, std::vector<Long>> meeting_;
};

// Whether two sorted lists have an element in common.
bool HaveCommon(const std::vector<Long>& left, const std::vector<Long>& right);

}  // namespace rebate
