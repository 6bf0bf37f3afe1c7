#include <algorithm>
#include <unordered_map>

#include "platform/database/tsql/bind/bind_context.h"
#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

// The engine's functions take 127 arguments, of which the program is one.
constexpr std::size_t kMostArguments = 120;
constexpr std::size_t kLongestList = 30;  // of an IN that is calculated
constexpr int kSymbols = 5;               // that wait on the parser's stack while it reads an argument
constexpr std::string_view kTooDeep =
    "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.";

std::string_view ConversionWord(Purpose purpose) {
  switch (purpose) {
    case Purpose::Assign:
      return "assign";
    case Purpose::Match:
      return "match";
    case Purpose::Tolerant:
      return "try";
    case Purpose::Cast:
      break;
  }
  return "cast";
}

// Decides which parts of an expression are left to calculations of their own, so that none takes too many arguments.
class Cutter {
 public:
  explicit Cutter(std::size_t most) : most_(most) {}

  bool IsCut(const bound::Expression& expression) const { return cut_.contains(&expression); }

  // The arguments that the expression takes.
  std::size_t Count(const bound::Expression& expression) {
    if (IsArgument(expression)) return 1;
    std::vector<std::pair<std::size_t, const bound::Expression*>> parts;
    std::size_t count = 0;
    ForEachPart(expression, [&](const bound::Expression& part) {
      parts.emplace_back(Count(part), &part);
      count += parts.back().first;
    });
    std::sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [size, part] : parts) {
      if (count <= most_ || size <= 1) break;
      cut_.emplace(part, true);
      count -= size - 1;
    }
    return count;
  }

 private:
  std::size_t most_;
  std::unordered_map<const bound::Expression*, bool> cut_;
};

class Compiler {
 public:
  explicit Compiler(const Cutter& cutter) : cutter_(cutter) {}

  // `root` itself is compiled even where it could be left to another calculation.
  void Compile(const bound::Expression& expression, bool root = false) {
    if (IsArgument(expression) || (!root && cutter_.IsCut(expression))) return Argument(expression);
    std::visit([&](const auto& node) { Node(expression, node); }, expression.node);
  }

  Calculation Finish() {
    Calculation calculation;
    for (const Text& word : words_) {
      if (!calculation.program.empty()) calculation.program += ' ';
      calculation.program += word;
    }
    calculation.arguments = std::move(arguments_);
    calculation.varies = varies_;
    return calculation;
  }

 private:
  void Argument(const bound::Expression& expression) {
    Add("arg:" + std::to_string(arguments_.size()) + ':' + TypeCode(expression.type));
    arguments_.push_back(&expression);
  }

  void Node(const bound::Expression& expression, const bound::Null&) { Add("null:" + TypeCode(expression.type)); }

  void Node(const bound::Expression& expression, const bound::Convert& node) {
    Compile(*node.operand);
    if (node.style) Compile(*node.style);
    const Text word(node.style ? "style" : ConversionWord(node.purpose));
    Add(word + ':' + TypeCode(node.operand->type) + ':' + TypeCode(expression.type));
  }

  void Node(const bound::Expression& expression, const bound::Call& node) {
    for (const auto& argument : node.arguments) Compile(*argument);
    varies_ = varies_ || node.function->varies;
    Add("call:" + Text(node.function->name) + ':' + std::to_string(node.arguments.size()) + ':' +
        TypeCode(expression.type));
  }

  void Node(const bound::Expression&, const bound::Coalesce& node) {
    std::vector<std::size_t> jumps;
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
      Compile(*node.arguments[i]);
      if (i + 1 < node.arguments.size()) jumps.push_back(Jump("ifnull"));
    }
    for (const std::size_t jump : jumps) Land(jump);
  }

  void Node(const bound::Expression& expression, const bound::NullIf& node) {
    Compile(*node.left);
    Add("dup");
    BringOperand(node.left->type, node.meeting, Purpose::Match);
    Compile(*node.right);
    Add("=");
    const std::size_t different = Jump("unless");
    Add("pop");
    Add("null:" + TypeCode(expression.type));
    Land(different);
  }

  void Node(const bound::Expression& expression, const bound::Case& node) {
    if (node.operand) Compile(*node.operand);
    std::vector<std::size_t> ends;
    for (const bound::CaseBranch& branch : node.branches) {
      if (node.operand) {
        Add("dup");
        BringOperand(node.operand->type, branch.meeting, branch.purpose);
      }
      Compile(*branch.when);
      if (node.operand) Add("=");
      const std::size_t next = Jump("unless");
      if (node.operand) Add("pop");
      Compile(*branch.then);
      ends.push_back(Jump("goto"));
      Land(next);
    }
    if (node.operand) Add("pop");
    if (node.otherwise) {
      Compile(*node.otherwise);
    } else {
      Add("null:" + TypeCode(expression.type));
    }
    for (const std::size_t end : ends) Land(end);
  }

  void Node(const bound::Expression&, const bound::Comparison& node) {
    Compile(*node.left);
    Compile(*node.right);
    Add(Text(ComparisonSign(node.operation)));
  }

  void Node(const bound::Expression&, const bound::Logical& node) {
    Compile(*node.left);
    const std::size_t decided = Jump(node.conjunction ? "false" : "true");
    Compile(*node.right);
    Add(node.conjunction ? "and" : "or");
    Land(decided);
  }

  void Node(const bound::Expression&, const bound::Not& node) {
    Compile(*node.operand);
    Add("not");
  }

  void Node(const bound::Expression&, const bound::IsNull& node) {
    Compile(*node.operand);
    Add("isnull");
    if (node.negated) Add("not");
  }

  void Node(const bound::Expression&, const bound::InList& node) {
    Compile(*node.operand);
    for (const auto& item : node.items) Compile(*item);
    Add("in:" + std::to_string(node.items.size()));
    if (node.negated) Add("not");
  }

  void Node(const bound::Expression&, const bound::Between& node) {
    Compile(*node.operand);
    Compile(*node.low);
    Compile(*node.high);
    Add("between");
    if (node.negated) Add("not");
  }

  // The others are leaves.
  template <typename Leaf>
  void Node(const bound::Expression& expression, const Leaf&) {
    Argument(expression);
  }

  void BringOperand(const DataType& from, const DataType& to, Purpose purpose) {
    if (from != to) Add(Text(ConversionWord(purpose)) + ':' + TypeCode(from) + ':' + TypeCode(to));
  }

  void Add(Text word) { words_.push_back(std::move(word)); }
  std::size_t Jump(std::string_view word) {
    words_.push_back(Text(word) + ':');
    return words_.size() - 1;
  }
  void Land(std::size_t jump) { words_[jump] += std::to_string(words_.size()); }

  const Cutter& cutter_;
  std::vector<Text> words_;
  std::vector<const bound::Expression*> arguments_;
  bool varies_ = false;
};

}  // namespace

bool IsArgument(const bound::Expression& expression) {
  const auto& node = expression.node;
  if (const auto* in = std::get_if<bound::InList>(&node)) return in->items.size() > kLongestList;
  return std::holds_alternative<bound::Literal>(node) || std::holds_alternative<bound::Constant>(node) ||
         std::holds_alternative<bound::Column>(node) || std::holds_alternative<bound::Variable>(node) ||
         std::holds_alternative<bound::System>(node) || std::holds_alternative<bound::Aggregate>(node) ||
         std::holds_alternative<bound::ScalarQuery>(node) || std::holds_alternative<bound::InQuery>(node) ||
         std::holds_alternative<bound::Exists>(node);
}

void PrintCalculation(PrintState& state, const bound::Expression& expression, SqlText& out) {
  Cutter cutter(kMostArguments - 20);
  cutter.Count(expression);
  Compiler compiler(cutter);
  compiler.Compile(expression, true);
  const Calculation calculation = compiler.Finish();
  if (calculation.arguments.size() > kMostArguments) RefuseStatement(Text(kTooDeep));
  out << (calculation.varies ? "t_calc_anew(" : "t_calc(") << SqlString(calculation.program);
  state.symbols += kSymbols;
  for (const bound::Expression* argument : calculation.arguments) {
    out << ',';
    if (cutter.IsCut(*argument)) {
      PrintCalculation(state, *argument, out);
    } else {
      PrintValue(state, *argument, out);
    }
  }
  state.symbols -= kSymbols;
  out << ')';
}

Calculation MakeCalculation(const bound::Expression& expression) {
  const Cutter cutter(0);
  Compiler compiler(cutter);
  compiler.Compile(expression, true);
  return compiler.Finish();
}

}  // namespace rebate::tsql
