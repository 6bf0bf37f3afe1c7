#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/database/tsql/ast.h"
#include "platform/database/tsql/lexer.h"

// The parser of this room: a cursor over the tokens of one batch, and a method for each piece of the language, defined
// in the source that is about it (expressions, queries, statements, definitions). Words are given in lower case.
namespace rebate::tsql {

class Parser {
 public:
  explicit Parser(std::string_view batch) : batch_(batch), tokens_(Tokenize(batch)) {}

  Batch ParseBatch();

 private:
  // Counts the levels of nesting, and refuses a text with more than the stack is sure to hold.
  class Nesting {
   public:
    explicit Nesting(Parser& parser);
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Parser& parser_;
  };

  // ---- the cursor ----
  const Token& Peek(std::size_t ahead = 0) const;
  const Token& Take();
  bool IsWord(std::string_view word, std::size_t ahead = 0) const;
  bool IsAnyWord(std::initializer_list<std::string_view> words, std::size_t ahead = 0) const;
  bool IsSymbol(std::string_view symbol, std::size_t ahead = 0) const;
  bool IsString(std::size_t ahead = 0) const;  // a literal of text
  bool IsName(std::size_t ahead = 0) const;    // a quoted name, or a word that isn't reserved
  bool AtEnd() const { return Peek().kind == TokenKind::End; }
  bool TakeWord(std::string_view word);      // whether it was there
  bool TakeSymbol(std::string_view symbol);  // whether it was there
  void ExpectWord(std::string_view word);
  void ExpectSymbol(std::string_view symbol);
  [[noreturn]] void FailHere() const;
  void RefuseWord(std::string_view word) const;  // where it is next
  std::size_t TakePinned();                      // the position of the literal under the cursor, whose value is read
  void CheckChain(std::size_t length) const;     // of operators or joins, each of which nests the tree a level deeper

  // ---- names and types ----
  Text ParseName();
  std::vector<Text> ParseNameParts();  // `a.b.c`; a part left out is empty
  ObjectName ParseObjectName();
  Text ParseVariable();
  Text ParseDeclaredVariable();  // one that can be assigned
  bool IsDeclared(std::string_view variable) const;
  Text ParseAlias();  // empty where there is none
  DataType ParseType(bool in_cast = false);
  int ParsePositive(int highest);
  std::int64_t ParseSignedInteger();

  // ---- expressions ----
  ExpressionPtr ParseValue();
  ExpressionPtr ParseCondition();
  ExpressionPtr ParseEither();  // a value or a condition
  ExpressionPtr ParseConjunction();
  ExpressionPtr ParseNegation();
  ExpressionPtr ParsePredicate();
  ExpressionPtr ParsePredicateTail(ExpressionPtr operand, bool negated);
  ExpressionPtr ParseInTail(ExpressionPtr operand, bool negated);
  ExpressionPtr ParseSum();
  ExpressionPtr ParseProduct();
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseWordPrimary();
  ExpressionPtr ParseParenthesised();
  ExpressionPtr ParseColumnOrCall();
  ExpressionPtr ParseCall(Text name);
  ExpressionPtr ParseCase();
  ExpressionPtr ParseIif();
  ExpressionPtr ParseCast();
  ExpressionPtr ParseConvert();
  ExpressionPtr ParseVariableReference();
  ExpressionPtr RequireValue(ExpressionPtr expression) const;
  ExpressionPtr RequireCondition(ExpressionPtr expression) const;

  // ---- queries ----
  enum class SelectPlace { Statement, Insert, View, Nested };
  SelectPtr ParseSelect(SelectPlace place);
  SelectPtr ParseSetOperands(SelectPlace place);
  SelectPtr ParseIntersections(SelectPlace place);
  SelectPtr ParseSetOperand(SelectPlace place);
  SelectCore ParseCore(SelectPlace place);
  void ParseTop(SelectCore& core);
  void ParseItems(SelectCore& core, SelectPlace place);
  SelectItem ParseItem(SelectPlace place);
  void ParseGrouping(SelectCore& core);
  std::vector<OrderItem> ParseOrderBy();
  std::vector<TableSourcePtr> ParseFrom();
  TableSourcePtr ParseTableSource();
  TableSourcePtr ParseJoins(TableSourcePtr left);
  bool TakeJoin(JoinKind& kind);
  TableSourcePtr ParseTable();
  TableSourcePtr ParseParenthesisedTable();
  TableSourcePtr ParseNamedTable();
  bool StartsQuery() const;  // at an opening bracket: whether it encloses a query, and not joined tables
  Text ParseTableAlias();
  void SkipHints();
  void SkipHintList();

  // ---- statements ----
  void ParseStatement(Block& block);
  bool ParseDataStatement(Block& block);
  bool ParseControlStatement(Block& block);
  bool ParseDefinitionStatement(Block& block);
  bool ParseTransactionStatement(Block& block);
  void ParseCreate(Block& block);
  void ParseBlock(Block& block);
  [[noreturn]] void FailStatement();
  Block ParseBody();
  Insert ParseInsert();
  void ParseRows(Insert& insert);
  Update ParseUpdate();
  Assignment ParseAssignment();
  ExpressionPtr ParseAssigned(ExpressionPtr current);
  Delete ParseDelete();
  If ParseIf();
  While ParseWhile();
  void ParseDeclare(Block& block);
  void ParseSet(Block& block);
  void ParseSetOptions(Block& block);
  bool ParseSwitch();  // `on` or `off`
  Jump ParseJump(LoopJump kind);
  Return ParseReturn();
  ObjectName ParseTarget();
  void SkipTransactionName();

  // ---- definitions ----
  CreateTable ParseCreateTable();
  void ParseTableElement(CreateTable& table);
  ColumnDefinition ParseColumn();
  bool ParseColumnConstraint(ColumnDefinition& column);
  void ParseIdentity(ColumnDefinition& column);
  KeyConstraint ParseKeyConstraint();
  std::vector<Text> ParseColumnNames();  // `(a, b)`
  std::vector<Text> ParseKeyColumns();   // `(a asc, b desc)`
  std::size_t EndOfLastToken() const;    // the one just taken, with its closing quote
  void SkipClustering();
  void SkipFileGroup();
  CreateIndex ParseCreateIndex(bool unique);
  CreateView ParseCreateView();
  Drop ParseDrop();

  static bool IsQuoted(const Token& token);  // a text or a name in quotation marks

  std::string_view batch_;
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  int depth_ = 0;
  int loops_ = 0;
  std::vector<Text> variables_;  // declared so far
  std::vector<std::size_t> pinned_;
};

template <typename Node>
ExpressionPtr MakeExpression(Node node) {
  auto expression = std::make_unique<Expression>();
  expression->node = std::move(node);
  return expression;
}

template <typename Node>
void Append(Block& block, Node node) {
  block.push_back(std::make_unique<Statement>());
  block.back()->node = std::move(node);
}

}  // namespace rebate::tsql
