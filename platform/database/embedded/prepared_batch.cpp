#include "platform/database/embedded/prepared_batch.h"

#include <algorithm>
#include <iterator>

#include "platform/database/tsql/parse/parser.h"

namespace rebate {
namespace {

std::vector<Step> StepsOf(const tsql::Block& block, PreparedBatch& batch);

// Lays the steps inside a statement out, and notes in the batch what it does.
struct StepVisitor {
  Step& step;
  PreparedBatch& batch;

  void operator()(const tsql::SelectStatement& node) {
    if (node.select->cores.front().into) batch.reads_only = false;
  }
  void operator()(const tsql::If& node) {
    batch.reads_only = false;
    step.then = StepsOf(node.then, batch);
    step.otherwise = StepsOf(node.otherwise, batch);
  }
  void operator()(const tsql::While& node) {
    batch.reads_only = false;
    step.then = StepsOf(node.body, batch);
  }
  void operator()(const tsql::Declare& node) { batch.variables[tsql::LowerKey(node.variable)] = node.type; }
  void operator()(const tsql::SetVariable&) {}
  void operator()(const tsql::SetOption&) {}
  void operator()(const tsql::Print&) {}
  void operator()(const tsql::RaiseError&) {}
  void operator()(const tsql::Throw&) {}
  void operator()(const tsql::CreateTable&) { Define(); }
  void operator()(const tsql::AlterTableAdd&) { Define(); }
  void operator()(const tsql::CreateIndex&) { Define(); }
  void operator()(const tsql::CreateView&) { Define(); }
  template <typename Other>
  void operator()(const Other&) {
    batch.reads_only = false;
  }

  void Define() {
    batch.reads_only = false;
    batch.keep = false;
  }
};

std::vector<Step> StepsOf(const tsql::Block& block, PreparedBatch& batch) {
  std::vector<Step> steps(block.size());
  for (std::size_t i = 0; i < block.size(); ++i) {
    steps[i].statement = block[i].get();
    std::visit(StepVisitor{steps[i], batch}, block[i]->node);
  }
  return steps;
}

}  // namespace

PreparedBatch::PreparedBatch(std::string_view text, const std::vector<tsql::LiteralToken>& literals)
    : batch(tsql::Parse(text)) {
  for (const std::size_t literal : batch.fixed_literals) FixLiteral(literal, literals);
  steps = StepsOf(batch.statements, *this);
}

void PreparedBatch::FixLiteral(std::size_t literal, std::span<const tsql::LiteralToken> literals) {
  const auto known = std::any_of(fixed_literals.begin(), fixed_literals.end(),
                                 [&](const FixedLiteral& fixed) { return fixed.literal == literal; });
  if (!known) fixed_literals.push_back({literal, Text(literals[literal].text)});
}

bool PreparedBatch::Matches(std::span<const tsql::LiteralToken> literals) const {
  return std::all_of(fixed_literals.begin(), fixed_literals.end(),
                     [&](const FixedLiteral& fixed) { return fixed.text == literals[fixed.literal].text; });
}

bool PreparedBatch::InsertsRow() const {
  if (steps.size() != 1 || steps.front().commands.size() != 1) return false;
  const std::unique_ptr<PreparedCommand>& command = steps.front().commands.front();
  return command && command->command.row;
}

PreparedBatchPtr BatchCache::Get(std::string_view text, std::vector<tsql::LiteralToken>& literals) {
  if (PreparedBatchPtr batch = FindRecent(text, literals)) return batch;
  ReadTemplate(text, template_);
  literals = template_.literals;
  PreparedBatchPtr batch = FindOrMake(text);
  if (batch->keep && !literals.empty()) {
    Recent& recent = recent_[next_recent_++ % recent_.size()];
    recent.batch = nullptr;
    recent.shape.Learn(text, literals);
    recent.batch = batch;
  }
  return batch;
}

PreparedBatchPtr BatchCache::FindRecent(std::string_view text, std::vector<tsql::LiteralToken>& literals) {
  for (const Recent& recent : recent_) {
    if (!recent.batch || !recent.shape.Reads(text, literals) || !recent.batch->Matches(literals)) continue;
    recent.batch->last_used = ++clock_;
    return recent.batch;
  }
  return nullptr;
}

PreparedBatchPtr BatchCache::FindOrMake(std::string_view text) {
  const auto found = batches_.find(std::string_view(template_.key));
  if (found != batches_.end()) {
    for (const PreparedBatchPtr& batch : found->second) {
      if (!batch->Matches(template_.literals)) continue;
      batch->last_used = ++clock_;
      return batch;
    }
  }
  auto batch = std::make_shared<PreparedBatch>(text, template_.literals);
  batch->last_used = ++clock_;
  if (batch->keep) {
    if (count_ == kCapacity) MakeRoom();
    batches_[template_.key].push_back(batch);
    ++count_;
  }
  return batch;
}

// Several at once: each time all of them have to be looked through.
void BatchCache::MakeRoom() {
  std::vector<std::uint64_t> uses;
  for (const auto& [key, batches] : batches_) {
    for (const PreparedBatchPtr& batch : batches) uses.push_back(batch->last_used);
  }
  const auto last_to_go = uses.begin() + kCapacity / 8;
  std::nth_element(uses.begin(), last_to_go, uses.end());
  const auto goes = [bound = *last_to_go](const PreparedBatchPtr& batch) { return batch->last_used <= bound; };
  for (auto entry = batches_.begin(); entry != batches_.end();) {
    count_ -= std::erase_if(entry->second, goes);
    entry = entry->second.empty() ? batches_.erase(entry) : std::next(entry);
  }
}

}  // namespace rebate
