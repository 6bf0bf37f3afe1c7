#include "platform/database/embedded/program.h"

#include <algorithm>
#include <limits>

#include "platform/database/tsql/parser.h"

namespace rebate {
namespace {

std::vector<Step> StepsOf(const tsql::Block& block, Program& program);

// Lays the steps inside a statement out, and notes in the program what it does.
struct StepVisitor {
  Step& step;
  Program& program;

  void operator()(const tsql::SelectStatement& node) {
    if (node.select->cores.front().into) program.reads_only = false;
  }
  void operator()(const tsql::If& node) {
    program.reads_only = false;
    step.then = StepsOf(node.then, program);
    step.otherwise = StepsOf(node.otherwise, program);
  }
  void operator()(const tsql::While& node) {
    program.reads_only = false;
    step.then = StepsOf(node.body, program);
  }
  void operator()(const tsql::Declare& node) { program.variables[tsql::LowerKey(node.variable)] = node.type; }
  void operator()(const tsql::SetVariable&) {}
  void operator()(const tsql::SetOption&) {}
  void operator()(const tsql::Print&) {}
  void operator()(const tsql::CreateTable&) { Define(); }
  void operator()(const tsql::CreateIndex&) { Define(); }
  void operator()(const tsql::CreateView&) { Define(); }
  template <typename Other>
  void operator()(const Other&) {
    program.reads_only = false;
  }

  void Define() {
    program.reads_only = false;
    program.keep = false;
  }
};

std::vector<Step> StepsOf(const tsql::Block& block, Program& program) {
  std::vector<Step> steps(block.size());
  for (std::size_t i = 0; i < block.size(); ++i) {
    steps[i].statement = block[i].get();
    std::visit(StepVisitor{steps[i], program}, block[i]->node);
  }
  return steps;
}

}  // namespace

Program::Program(std::string_view text, const std::vector<tsql::LiteralToken>& literals) : batch(tsql::Parse(text)) {
  for (const std::size_t literal : batch.pinned) Pin(literal, literals);
  steps = StepsOf(batch.statements, *this);
}

void Program::Pin(std::size_t literal, std::span<const tsql::LiteralToken> literals) {
  const auto known = std::any_of(pins.begin(), pins.end(), [&](const Pinned& pin) { return pin.literal == literal; });
  if (!known) pins.push_back({literal, Text(literals[literal].text)});
}

bool Program::Serves(std::span<const tsql::LiteralToken> literals) const {
  return std::all_of(pins.begin(), pins.end(),
                     [&](const Pinned& pin) { return pin.text == literals[pin.literal].text; });
}

ProgramPtr ProgramCache::Get(std::string_view text, const tsql::Shape& shape) {
  const auto found = programs_.find(std::string_view(shape.key));
  if (found != programs_.end()) {
    for (const ProgramPtr& program : found->second) {
      if (!program->Serves(shape.literals)) continue;
      program->last_used = ++clock_;
      return program;
    }
  }
  auto program = std::make_shared<Program>(text, shape.literals);
  program->last_used = ++clock_;
  if (program->keep) {
    if (count_ == kCapacity) MakeRoom();
    programs_[shape.key].push_back(program);
    ++count_;
  }
  return program;
}

void ProgramCache::MakeRoom() {
  std::uint64_t oldest = std::numeric_limits<std::uint64_t>::max();
  for (const auto& [key, programs] : programs_) {
    for (const ProgramPtr& program : programs) oldest = std::min(oldest, program->last_used);
  }
  for (auto entry = programs_.begin(); entry != programs_.end(); ++entry) {
    const auto gone = std::erase_if(entry->second, [oldest](const ProgramPtr& p) { return p->last_used == oldest; });
    if (gone == 0) continue;
    if (entry->second.empty()) programs_.erase(entry);
    --count_;
    return;
  }
}

}  // namespace rebate
