#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/database/tsql/eval/convert.h"
#include "platform/database/tsql/eval/function.h"

// The calculation of one value out of others. SQLite moves rows; what Transact-SQL does with their values is done here,
// whatever the depth of an expression.
//
// A calculation is known by a text, since statements carry it to SQLite and account files keep it: words with a blank
// between them, each one step on a stack of values. Types are written `int`, `decimal/28/10`, `nvarchar/255`.
//
//   arg:0:int           pushes an argument of that type
//   null:int            pushes Null
//   cast:int:money      converts the top from one type to another; likewise assign, match, try
//   style:datetime:varchar/10   converts what lies below the top, the top being a style
//   call:add:2:int      calls a function with so many values from the top, for a result of that type
//   =  <>  <  <=  >  >= compare the two on top as values of one family
//   and  or  not  isnull  between  in:3
//   dup  pop
//   unless:7            takes the condition on top, and goes on at step 7 where it doesn't hold
//   goto:9              goes on there
//   ifnull:5            takes the top away where it is Null, else goes on at step 5
//   false:6  true:6     go on there, leaving the top, where it is false (true)
namespace rebate::tsql {

// A type as programs write it, and back; reading raises for what is none.
Text TypeCode(const DataType& type);
DataType ReadTypeCode(std::string_view code);

class Program {
 public:
  // Reads a program; raises where the text is none.
  explicit Program(std::string_view text);
  Program(Program&& other) noexcept;
  ~Program();

  // The types of the arguments, by position.
  const std::vector<DataType>& arguments() const { return arguments_; }
  const DataType& result() const { return result_; }

  // Values and texts of one run; its memory is used again.
  struct Memory {
    std::vector<Value> stack;
    TextPool pool;
  };

  // The value of the program for these arguments. A text in it lies in the arguments or in `memory`. Raises what the
  // functions and conversions raise.
  Value Run(std::span<const Value> arguments, Memory& memory) const;

  struct Step;

 private:
  std::vector<Step> steps_;
  std::vector<DataType> arguments_;
  DataType result_;
};

}  // namespace rebate::tsql
