#pragma once

#include "platform/database/tsql/bind/bound_tree.h"

namespace rebate::tsql {

// What is bound to a `?` of SQLite's text.
struct Parameter {
  enum class Source : std::uint8_t { Literal, Variable, System };
  Source source = Source::Literal;
  DataType type;  // that a literal is bound as
  bound::Literal literal{};
  bound::System system{};
  Text variable = {};
};

// A piece of a statement of SQLite with the parameters in it, in the order of their `?`. They bear no numbers: SQLite
// looks a number up among all others whenever it meets one.
struct SqlText {
  Text text;
  std::vector<Parameter> parameters;

  SqlText& operator<<(std::string_view piece) {
    text += piece;
    return *this;
  }
  SqlText& operator<<(char c) {
    text += c;
    return *this;
  }
  SqlText& operator<<(SqlText&& piece) {
    text += piece.text;
    parameters.insert(parameters.end(), std::make_move_iterator(piece.parameters.begin()),
                      std::make_move_iterator(piece.parameters.end()));
    return *this;
  }
};

// `text` as a string of the statement text of SQLite.
Text SqlString(std::string_view text);

}  // namespace rebate::tsql
