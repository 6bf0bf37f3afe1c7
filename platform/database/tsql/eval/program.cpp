#include "platform/database/tsql/eval/program.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <stdexcept>

#include "platform/database/tsql/eval/compare.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate::tsql {

enum class Operation : std::uint8_t {
  Argument,
  Null,
  Convert,
  Style,
  Call,
  Equal,
  NotEqual,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  And,
  Or,
  Not,
  IsNull,
  Between,
  In,
  Duplicate,
  Pop,
  Unless,
  Goto,
  IfNull,
  IfFalse,
  IfTrue
};

struct Program::Step {
  Operation operation;
  Purpose purpose = Purpose::Cast;
  bool dates = false;             // of a comparison
  std::size_t number = 0;         // of an argument, of values, or of a step
  const Function* function = nullptr;
  std::vector<DataType> types;    // of a call's arguments; of a conversion: from, to
  DataType type;                  // of the result
};

namespace {

struct Word {
  std::string_view text;
  Operation operation;
};
constexpr std::array<Word, 13> kPlain{{{"=", Operation::Equal},
                                       {"<>", Operation::NotEqual},
                                       {"<", Operation::Less},
                                       {"<=", Operation::LessEqual},
                                       {">", Operation::Greater},
                                       {">=", Operation::GreaterEqual},
                                       {"and", Operation::And},
                                       {"or", Operation::Or},
                                       {"not", Operation::Not},
                                       {"isnull", Operation::IsNull},
                                       {"between", Operation::Between},
                                       {"dup", Operation::Duplicate},
                                       {"pop", Operation::Pop}}};
constexpr std::array<Word, 5> kJumps{{{"unless", Operation::Unless},
                                      {"goto", Operation::Goto},
                                      {"ifnull", Operation::IfNull},
                                      {"false", Operation::IfFalse},
                                      {"true", Operation::IfTrue}}};
struct PurposeWord {
  std::string_view text;
  Purpose purpose;
};
constexpr std::array<PurposeWord, 4> kConversions{{{"cast", Purpose::Cast},
                                                   {"assign", Purpose::Assign},
                                                   {"match", Purpose::Match},
                                                   {"try", Purpose::Tolerant}}};

[[noreturn]] void Fail(std::string_view text) {
  throw std::invalid_argument("no calculation: " + Text(text));
}

std::size_t ReadCount(std::string_view text) {
  const std::optional<std::size_t> number = WholeNumber<std::size_t>(text);
  if (!number) Fail(text);
  return *number;
}

template <std::size_t Count>
const Word* FindWord(const std::array<Word, Count>& words, std::string_view text) {
  const auto found = std::find_if(words.begin(), words.end(), [&](const Word& word) { return word.text == text; });
  return found == words.end() ? nullptr : found;
}

// Reads the steps of a program, and knows at each the types that lie on the stack.
class StepReader {
 public:
  explicit StepReader(std::vector<DataType>& arguments) : arguments_(arguments) {}

  Program::Step Read(std::string_view word, std::size_t position) {
    if (const auto target = targets_.find(position); target != targets_.end()) types_ = target->second;
    const std::vector<Text> parts = Split(word, ':');
    Program::Step step{};
    const Text& name = parts.front();
    if (const Word* plain = FindWord(kPlain, name)) {
      step.operation = plain->operation;
      ReadPlain(step);
    } else if (const Word* jump = FindWord(kJumps, name); jump != nullptr && parts.size() == 2) {
      step.operation = jump->operation;
      ReadJump(step, ReadCount(parts[1]));
    } else {
      ReadTyped(step, parts, word);
    }
    return step;
  }

  const DataType& Top() const {
    if (types_.empty()) Fail("an empty stack");
    return types_.back();
  }

 private:
  DataType Pop() {
    const DataType type = Top();
    types_.pop_back();
    return type;
  }

  void Replace(std::size_t count, const DataType& type) {
    for (std::size_t i = 0; i < count; ++i) Pop();
    types_.push_back(type);
  }

  void ReadPlain(Program::Step& step) {
    switch (step.operation) {
      case Operation::Duplicate:
        types_.push_back(Top());
        break;
      case Operation::Pop:
        Pop();
        break;
      case Operation::Not:
      case Operation::IsNull:
        Replace(1, TypeOf(TypeKind::Bit));
        break;
      case Operation::Between:
        step.dates = !IsText(Top().kind);
        Replace(3, TypeOf(TypeKind::Bit));
        break;
      default:
        step.dates = !IsText(Top().kind);
        Replace(2, TypeOf(TypeKind::Bit));
    }
  }

  void ReadJump(Program::Step& step, std::size_t target) {
    step.number = target;
    if (step.operation == Operation::Unless) Pop();
    std::vector<DataType> at_target = types_;
    if (step.operation == Operation::IfNull) Pop();
    // Where two ways meet they bring the same; behind a goto, the steps are those to which an earlier one leads.
    targets_.emplace(target, std::move(at_target));
  }

  void ReadTyped(Program::Step& step, const std::vector<Text>& parts, std::string_view word) {
    const Text& name = parts.front();
    if (name == "arg" && parts.size() == 3) {
      step.operation = Operation::Argument;
      step.number = ReadCount(parts[1]);
      step.type = ReadTypeCode(parts[2]);
      if (arguments_.size() <= step.number) arguments_.resize(step.number + 1);
      arguments_[step.number] = step.type;
      types_.push_back(step.type);
    } else if (name == "null" && parts.size() == 2) {
      step.operation = Operation::Null;
      types_.push_back(ReadTypeCode(parts[1]));
    } else if (name == "in" && parts.size() == 2) {
      step.operation = Operation::In;
      step.number = ReadCount(parts[1]);
      Replace(step.number + 1, TypeOf(TypeKind::Bit));
    } else if (name == "call" && parts.size() == 4) {
      ReadCall(step, parts);
    } else if (parts.size() == 3) {
      ReadConversion(step, parts, word);
    } else {
      Fail(word);
    }
  }

  void ReadCall(Program::Step& step, const std::vector<Text>& parts) {
    step.operation = Operation::Call;
    step.function = FindFunction(parts[1]);
    if (step.function == nullptr) Fail(parts[1]);
    step.number = ReadCount(parts[2]);
    step.type = ReadTypeCode(parts[3]);
    if (step.number > types_.size()) Fail(parts[1]);
    step.types.assign(types_.end() - static_cast<std::ptrdiff_t>(step.number), types_.end());
    Replace(step.number, step.type);
  }

  void ReadConversion(Program::Step& step, const std::vector<Text>& parts, std::string_view word) {
    const DataType from = ReadTypeCode(parts[1]);
    step.type = ReadTypeCode(parts[2]);
    step.types = {from, step.type};
    const auto found = std::find_if(kConversions.begin(), kConversions.end(),
                                    [&](const PurposeWord& purpose) { return purpose.text == parts.front(); });
    if (parts.front() == "style") {
      step.operation = Operation::Style;
      Replace(2, step.type);
    } else if (found != kConversions.end()) {
      step.operation = Operation::Convert;
      step.purpose = found->purpose;
      Replace(1, step.type);
    } else {
      Fail(word);
    }
  }

  std::vector<DataType>& arguments_;
  std::vector<DataType> types_;
  std::map<std::size_t, std::vector<DataType>> targets_;
};

std::optional<bool> Truth(const Value& value) {
  if (value.IsNull()) return std::nullopt;
  return value.integer != 0;
}

Value ValueOf(std::optional<bool> truth) {
  return truth ? Value::OfBool(*truth) : Value();
}

Value Compare(Operation operation, const Value& left, const Value& right, bool dates) {
  if (left.IsNull() || right.IsNull()) return {};
  switch (operation) {
    case Operation::Equal:
      return Value::OfBool(EqualValues(left, right));
    case Operation::NotEqual:
      return Value::OfBool(!EqualValues(left, right));
    case Operation::Less:
      return Value::OfBool(CompareValues(left, right, dates) < 0);
    case Operation::LessEqual:
      return Value::OfBool(CompareValues(left, right, dates) <= 0);
    case Operation::Greater:
      return Value::OfBool(CompareValues(left, right, dates) > 0);
    default:
      return Value::OfBool(CompareValues(left, right, dates) >= 0);
  }
}

// One run of a program.
class Runner {
 public:
  Runner(std::span<const Value> arguments, Program::Memory& memory)
      : arguments_(arguments), stack_(memory.stack), pool_(memory.pool) {
    stack_.clear();
    pool_.Clear();
  }

  // Gives the step to go on with.
  std::size_t Do(const Program::Step& step, std::size_t next) {
    switch (step.operation) {
      case Operation::Argument:
        stack_.push_back(arguments_[step.number]);
        break;
      case Operation::Null:
        stack_.emplace_back();
        break;
      case Operation::Convert:
        stack_.back() = Convert(stack_.back(), step.types[0], step.types[1], step.purpose, pool_);
        break;
      case Operation::Style:
        ConvertWithStyle(step);
        break;
      case Operation::Call:
        Call(step);
        break;
      case Operation::And:
        Join(And);
        break;
      case Operation::Or:
        Join(Or);
        break;
      case Operation::Not:
        if (!stack_.back().IsNull()) stack_.back() = Value::OfBool(stack_.back().integer == 0);
        break;
      case Operation::IsNull:
        stack_.back() = Value::OfBool(stack_.back().IsNull());
        break;
      case Operation::Between:
        Between(step);
        break;
      case Operation::In:
        In(step);
        break;
      case Operation::Duplicate:
        stack_.push_back(Value(stack_.back()));
        break;
      case Operation::Pop:
        stack_.pop_back();
        break;
      case Operation::Unless:
      case Operation::Goto:
      case Operation::IfNull:
      case Operation::IfFalse:
      case Operation::IfTrue:
        return Jump(step, next);
      default: {
        const Value right = Take();
        stack_.back() = Compare(step.operation, stack_.back(), right, step.dates);
      }
    }
    return next;
  }

 private:
  Value Take() {
    const Value value = stack_.back();
    stack_.pop_back();
    return value;
  }

  std::size_t Jump(const Program::Step& step, std::size_t next) {
    switch (step.operation) {
      case Operation::Unless:
        return Truth(Take()) == true ? next : step.number;
      case Operation::IfNull:
        if (!stack_.back().IsNull()) return step.number;
        stack_.pop_back();
        return next;
      case Operation::IfFalse:
        return Truth(stack_.back()) == false ? step.number : next;
      case Operation::IfTrue:
        return Truth(stack_.back()) == true ? step.number : next;
      default:
        return step.number;
    }
  }

  template <typename Logic>
  void Join(const Logic& logic) {
    const Value right = Take();
    stack_.back() = ValueOf(logic(Truth(stack_.back()), Truth(right)));
  }

  void ConvertWithStyle(const Program::Step& step) {
    const Value style = Take();
    Value& value = stack_.back();
    value = style.IsNull() ? Value()
                           : Convert(value, step.types[0], step.types[1], Purpose::Cast, pool_,
                                     static_cast<int>(style.integer));
  }

  void Call(const Program::Step& step) {
    const std::size_t first = stack_.size() - step.number;
    const std::span<const Value> arguments(stack_.data() + first, step.number);
    const bool has_null = !step.function->sees_nulls &&
                          std::any_of(arguments.begin(), arguments.end(), [](const Value& v) { return v.IsNull(); });
    const Value result = has_null ? Value() : step.function->body({arguments, step.types, step.type, pool_});
    stack_.resize(first);
    stack_.push_back(result);
  }

  void Between(const Program::Step& step) {
    const Value high = Take();
    const Value low = Take();
    const Value value = stack_.back();
    stack_.back() = ValueOf(And(Truth(Compare(Operation::GreaterEqual, value, low, step.dates)),
                                Truth(Compare(Operation::LessEqual, value, high, step.dates))));
  }

  void In(const Program::Step& step) {
    const std::size_t first = stack_.size() - step.number;
    const Value value = stack_[first - 1];
    std::optional<bool> found = false;
    for (std::size_t i = first; i < stack_.size(); ++i) {
      found = Or(found, Truth(Compare(Operation::Equal, value, stack_[i], false)));
    }
    stack_.resize(first);
    stack_.back() = ValueOf(found);
  }

  std::span<const Value> arguments_;
  std::vector<Value>& stack_;
  TextPool& pool_;
};

}  // namespace

Text TypeCode(const DataType& type) {
  Text code(NameOfType(type.kind));
  if (type.kind == TypeKind::Decimal) code += '/' + std::to_string(type.precision) + '/' + std::to_string(type.scale);
  if (type.kind == TypeKind::DateTime2) code += '/' + std::to_string(type.scale);
  if (IsText(type.kind)) code += type.length == DataType::kMaxLength ? "/max" : '/' + std::to_string(type.length);
  return code;
}

DataType ReadTypeCode(std::string_view code) {
  const std::vector<Text> parts = Split(code, '/');
  const auto kind = FindTypeKind(parts.front());
  if (!kind) Fail(code);
  DataType type{*kind};
  const auto number = [&](std::size_t part) {
    if (part >= parts.size()) Fail(code);
    return static_cast<int>(ReadCount(parts[part]));
  };
  if (type.kind == TypeKind::Decimal) {
    type.precision = number(1);
    type.scale = number(2);
  } else if (type.kind == TypeKind::DateTime2) {
    type.scale = number(1);
  } else if (IsText(type.kind)) {
    type.length = parts.size() == 2 && parts[1] == "max" ? DataType::kMaxLength : number(1);
  }
  return type;
}

Program::Program(std::string_view text) {
  StepReader reader(arguments_);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    steps_.push_back(reader.Read(text.substr(0, end), steps_.size()));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  result_ = reader.Top();
}

Program::Program(Program&& other) noexcept = default;
Program::~Program() = default;

Value Program::Run(std::span<const Value> arguments, Memory& memory) const {
  Runner runner(arguments, memory);
  for (std::size_t at = 0; at < steps_.size();) at = runner.Do(steps_[at], at + 1);
  return memory.stack.back();
}

}  // namespace rebate::tsql
