#include <algorithm>
#include <set>

#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

const bound::Source* SourceOf(const bound::From& from) {
  const auto* source = std::get_if<const bound::Source*>(&from.node);
  return source != nullptr ? *source : nullptr;
}

// ---- what a core makes of its rows ----

// The columns that a core takes from its sources.
class ColumnUse {
 public:
  // Nothing where a query stands in an expression, or anything takes a column of a query around the core.
  static std::optional<ColumnUse> Of(const bound::Core& core, const std::vector<bound::OrderKey>& order_by,
                                     const std::vector<const bound::Joined*>& chain) {
    ColumnUse use;
    for (const bound::SourcePtr& source : core.sources) {
      use.own_.insert(source.get());
      use.plain_ = use.plain_ && !(source->query && source->query->correlated);
    }
    for (const bound::Item& item : core.items) use.Add(*item.value);
    for (const bound::ExpressionPtr& group : core.group_by) use.Add(*group);
    for (const bound::OrderKey& key : order_by) use.AddOptional(key.value);
    for (const bound::Joined* join : chain) use.AddOptional(join->condition);
    use.AddOptional(core.where);
    use.AddOptional(core.having);
    use.AddOptional(core.top);
    if (!use.plain_) return std::nullopt;
    return use;
  }

  bool Has(const bound::Source* source, std::size_t column) const { return used_.contains({source, column}); }
  bool has_aggregate() const { return has_aggregate_; }

 private:
  void AddOptional(const bound::ExpressionPtr& expression) {
    if (expression) Add(*expression);
  }
  void Add(const bound::Expression& expression) {
    plain_ = plain_ && !expression.has_query;
    has_aggregate_ = has_aggregate_ || expression.has_aggregate;
    if (const auto* column = std::get_if<bound::Column>(&expression.node)) {
      plain_ = plain_ && own_.contains(column->source);
      used_.insert({column->source, column->index});
    }
    ForEachPart(expression, [&](const bound::Expression& part) { Add(part); });
  }

  std::set<const bound::Source*> own_;
  std::set<std::pair<const bound::Source*, std::size_t>> used_;
  bool plain_ = true;
  bool has_aggregate_ = false;
};

// ---- the join ----

// Two columns of different sources that are equal in every row of the join.
struct Link {
  const bound::Column* left;
  const bound::Column* right;
};

void AddLinks(const bound::Expression& condition, std::vector<Link>& links) {
  if (const auto* both = std::get_if<bound::Logical>(&condition.node)) {
    if (!both->conjunction) return;
    AddLinks(*both->left, links);
    AddLinks(*both->right, links);
  }
  const auto* comparison = std::get_if<bound::Comparison>(&condition.node);
  if (comparison == nullptr || comparison->operation != BinaryOperator::Equal) return;
  const auto* left = std::get_if<bound::Column>(&comparison->left->node);
  const auto* right = std::get_if<bound::Column>(&comparison->right->node);
  if (left == nullptr || right == nullptr || left->source == right->source) return;
  if (comparison->left->type.kind == comparison->right->type.kind) links.push_back({left, right});
}

// A chain of inner and left joins in which a temporary table takes part, which holds what the statement asks about.
class AskingJoin {
 public:
  static std::optional<AskingJoin> Of(const bound::Core& core, const std::vector<bound::OrderKey>& order_by) {
    if (core.from.size() != 1) return std::nullopt;
    AskingJoin join;
    if (!join.ReadChain(*core.from.front())) return std::nullopt;
    join.FindMembers();
    if (!join.FindOrder()) return std::nullopt;
    join.use_ = ColumnUse::Of(core, order_by, join.chain_);
    if (!join.use_) return std::nullopt;
    join.different_ = !core.group_by.empty() && !join.use_->has_aggregate();
    return join;
  }

  void Print(PrintState& state, SqlText& out, std::vector<SqlText>& conditions) const {
    for (std::size_t i = 1; i < order_.size(); ++i) PutReducedInFront(state, i);
    for (std::size_t i = 1; i < order_.size(); ++i) out << (i > 1 ? " CROSS JOIN " : "") << state.aliases[order_[i]];
    out << " CROSS JOIN ";
    PrintSource(state, *order_.front(), out);
    for (const bound::Joined* join : chain_) {
      if (!join->condition) continue;
      const bound::Source* source = SourceOf(*join->right);
      const bool member = IsMember(source);
      if (!member) {
        out << " LEFT JOIN ";
        PrintSource(state, *source, out);
        out << " ON ";
      }
      PrintCondition(state, *join->condition, member ? conditions.emplace_back() : out);
    }
  }

 private:
  bool ReadChain(const bound::From& from) {
    const bound::From* at = &from;
    for (const auto* join = std::get_if<bound::Joined>(&at->node); join != nullptr;
         join = std::get_if<bound::Joined>(&at->node)) {
      const bool moves = join->kind == JoinKind::Inner || join->kind == JoinKind::Left || join->kind == JoinKind::Cross;
      if (!moves || SourceOf(*join->right) == nullptr) return false;
      chain_.insert(chain_.begin(), join);
      at = join->left.get();
    }
    base_ = SourceOf(*at);
    return !chain_.empty();
  }

  // A left joined source that an equation needs which must hold is inner joined by that need. A join's condition knows
  // no source behind it.
  void FindMembers() {
    for (auto join = chain_.rbegin(); join != chain_.rend(); ++join) {
      const bound::Source* source = SourceOf(*(*join)->right);
      const bool needed = std::any_of(links_.begin(), links_.end(), [&](const Link& link) {
        return link.left->source == source || link.right->source == source;
      });
      if ((*join)->kind == JoinKind::Left && !needed) continue;
      members_.insert(members_.begin(), source);
      if ((*join)->condition) AddLinks(*(*join)->condition, links_);
    }
    members_.insert(members_.begin(), base_);
  }

  bool IsMember(const bound::Source* source) const {
    return std::find(members_.begin(), members_.end(), source) != members_.end();
  }
  bool IsOrdered(const bound::Source* source) const {
    return std::find(order_.begin(), order_.end(), source) != order_.end();
  }

  // The links of the source to those that come before it, its own column on the left; the first is served by an index.
  std::vector<Link> LinksBack(const bound::Source* source) const {
    std::vector<Link> back;
    for (Link link : links_) {
      if (link.right->source == source) std::swap(link.left, link.right);
      if (link.left->source == source && IsOrdered(link.right->source)) back.push_back(link);
    }
    std::stable_partition(back.begin(), back.end(),
                          [&](const Link& link) { return IsServed(*source, link.left->index); });
    return back;
  }

  // The temporary table, then each member behind those from which an index leads to it.
  bool FindOrder() {
    const auto asks = [](const bound::Source* source) { return source->table && source->table->temporary; };
    if (asks(base_)) return false;
    const auto leader = std::find_if(members_.begin(), members_.end(), asks);
    if (leader == members_.end()) return false;
    order_.push_back(*leader);
    while (order_.size() < members_.size()) {
      const auto next = std::find_if(members_.begin(), members_.end(), [&](const bound::Source* source) {
        if (IsOrdered(source)) return false;
        const std::vector<Link> back = LinksBack(source);
        return !back.empty() && IsServed(*source, back.front().left->index);
      });
      if (next == members_.end()) return false;
      back_[*next] = LinksBack(*next);
      order_.push_back(*next);
    }
    return true;
  }

  // The rows of a member that can take part in the join, as queries in front of the statement: the values by which they
  // are found, then the rows.
  void PutReducedInFront(PrintState& state, std::size_t number) const {
    const bound::Source* source = order_[number];
    const std::vector<Link>& links = back_.at(source);
    const Text keys = PutKeysInFront(state, links.front());
    const int depth = std::exchange(state.query_depth, 0);
    const int symbols = std::exchange(state.symbols, 0);
    SqlText from;
    PrintSource(state, *source, from);
    state.query_depth = depth;
    state.symbols = symbols;
    const Text alias = state.aliases[source];
    SqlText text;
    // The limit keeps the engine from merging the two selects: it finds nothing over indexes in a union whose rows it
    // is to make different.
    text << (different_ ? "SELECT DISTINCT * FROM (SELECT " : "SELECT ");
    bool first = true;
    for (std::size_t i = 0; i < source->sql_columns.size(); ++i) {
      if (!use_->Has(source, i)) continue;
      text << (std::exchange(first, false) ? "" : ",") << alias << '.' << source->sql_columns[i] << " AS "
           << source->sql_columns[i];
    }
    text << " FROM " << keys << " CROSS JOIN " << std::move(from) << " WHERE " << alias << '.' << NameOf(*links[0].left)
         << '=' << keys << ".k";
    for (std::size_t i = 1; i < links.size(); ++i) {
      // By its sign the engine takes no index for this condition, but chooses by it among what it has found.
      text << " AND +" << alias << '.' << NameOf(*links[i].left) << " IN (SELECT " << NameOf(*links[i].right)
           << " FROM " << RowsOf(state, links[i]) << ')';
    }
    text << (different_ ? " LIMIT -1)" : "");
    const Text name = NewName(state, "_of_" + source->name);
    state.in_front.emplace_back(name, std::move(text));
    state.aliases[source] = name;
  }

  Text PutKeysInFront(PrintState& state, const Link& link) const {
    SqlText text;
    text << "SELECT DISTINCT " << NameOf(*link.right) << " AS k FROM " << RowsOf(state, link);
    const Text name = NewName(state, "_keys_of_" + link.left->source->name);
    state.in_front.emplace_back(name, std::move(text));
    return name;
  }

  static const Text& NameOf(const bound::Column& column) { return column.source->sql_columns[column.index]; }
  // Where the rows stand to which a link leads.
  Text RowsOf(PrintState& state, const Link& link) const {
    const bound::Source* other = link.right->source;
    return other == order_.front() ? other->table->SqlName() : state.aliases[other];
  }

  const bound::Source* base_ = nullptr;
  std::vector<const bound::Joined*> chain_;  // the innermost first
  std::vector<const bound::Source*> members_;
  std::vector<Link> links_;
  std::vector<const bound::Source*> order_;
  std::map<const bound::Source*, std::vector<Link>> back_;
  std::optional<ColumnUse> use_;
  bool different_ = false;  // the core doesn't see how often a row comes
};

}  // namespace

bool PrintReducedFrom(PrintState& state, const bound::Core& core, const std::vector<bound::OrderKey>& order_by,
                      SqlText& out, std::vector<SqlText>& conditions) {
  const std::optional<AskingJoin> join = AskingJoin::Of(core, order_by);
  if (!join) return false;
  join->Print(state, out, conditions);
  return true;
}

}  // namespace rebate::tsql
