#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/database/tsql/parse/lexer.h"
#include "platform/database/tsql/parse/tree.h"

// The parser of this room: a cursor over the tokens of one batch, and a method for each piece of the language, defined
// in the source that is about it (expressions, queries, statements, changes, definitions). Words are given in lower
// case.
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

  // Counts the operators of a chain, each of which nests the tree on its left a level deeper. A chain may begin with
  // a bracket that holds a chain: what counts is the sum of all on the way down.
  class Chain {
   public:
    explicit Chain(Parser& parser) : parser_(parser), around_(std::exchange(parser.chained_, 0)) {}
    ~Chain() { parser_.chained_ = std::max(around_, parser_.chained_ + length_); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    void Grow();

   private:
    Parser& parser_;
    std::size_t around_;
    std::size_t length_ = 0;
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
  std::size_t TakeFixedLiteral();                // the position of the literal under the cursor, whose value is read

  // ---- names and types ----
  Text ParseName();
  std::vector<Text> ParseNameParts();  // `a.b.c`; a part left out is empty
  ObjectName ParseObjectName();
  Text ParseVariable();
  Text ParseDeclaredVariable();  // one that can be assigned
  bool IsDeclared(std::string_view variable) const;
  Text ParseAlias();  // empty where there is none
  DataType ParseType(bool in_cast = false);
  Text ParseTypeName();  // the words of a name of several as its short form
  void ParseLength(DataType& type, int longest, bool in_cast);
  void ParsePrecision(DataType& type);
  void ParseSecondDigits(DataType& type);
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
  ExpressionPtr ParseCast(bool tolerant);
  ExpressionPtr ParseConvert(bool tolerant);
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
  CommonTables ParseCommonTables();  // none where no `with` is next
  void ParseTop(SelectCore& core);
  void ParseItems(SelectCore& core, SelectPlace place);
  SelectItem ParseItem(SelectPlace place);
  void ParseGrouping(SelectCore& core);
  std::vector<OrderItem> ParseOrderBy();
  std::vector<TableSourcePtr> ParseFrom();
  TableSourcePtr ParseTableSource();
  TableSourcePtr ParseJoins(TableSourcePtr left, Chain& chain);
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
  If ParseIf();
  While ParseWhile();
  void ParseDeclare(Block& block);
  void ParseSet(Block& block);
  void ParseSetOptions(Block& block);
  bool ParseSwitch();  // `on` or `off`
  Jump ParseJump(LoopJump kind);
  Return ParseReturn();
  Text ParseTransactionName();  // empty where there is none
  void CheckEndBefore() const;  // that a `with` which is next stands behind a semicolon
  RaiseError ParseRaiseError();
  Throw ParseThrow();
  ExpressionPtr ParseConstant();  // a literal, with its sign, or a variable

  // ---- changes of rows ----
  ObjectName ParseTarget();
  Insert ParseInsert(CommonTables with);
  Top ParseChangeTop();
  void ParseRows(Insert& insert);
  Update ParseUpdate(CommonTables with);
  Assignment ParseAssignment();
  bool AssignsColumn() const;  // behind a variable: whether `= column =` or `= column +=` is next
  ExpressionPtr ParseAssigned(ExpressionPtr current);
  Delete ParseDelete(CommonTables with);

  // ---- definitions ----
  [[noreturn]] void RefuseForm(std::string_view statement) const;  // by its name and the word that is next
  CreateTable ParseCreateTable();
  AlterTableAdd ParseAlter();
  void ParseTableElement(TableElements& elements);
  void ParseColumn(TableElements& elements);
  bool ParseColumnRule(ColumnDefinition& column, TableElements& elements);  // whether there was one
  // The columns of a primary key take no Null; refuses one that was written to take it.
  void SettlePrimaryColumns(TableElements& elements, const ObjectName& table) const;
  void ParseIdentity(ColumnDefinition& column);
  KeyConstraint ParseKeyConstraint(Text name);
  CheckConstraint ParseCheck(Text name, Text column);
  void RefuseReplication() const;
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
  std::size_t chained_ = 0;  // the operators on the longest way down what was parsed last
  int loops_ = 0;
  std::vector<Text> variables_;     // declared so far
  std::vector<Text> null_columns_;  // of the table that is read: those written as `null`
  std::vector<std::size_t> fixed_literals_;
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
