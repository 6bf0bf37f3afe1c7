#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/parse/lexer.h"

namespace rebate::tsql {
namespace {

BatchTemplate TemplateOf(std::string_view batch) {
  BatchTemplate batch_template;
  ReadTemplate(batch, batch_template);
  return batch_template;
}

Text ErrorOf(std::string_view batch) {
  try {
    TemplateOf(batch);
  } catch (const Error& error) {
    EXPECT_EQ(error.number, database_error::kStatement);
    return error.description;
  }
  return "none";
}

// The literals of a text as `kind:value`, kinds being I(nteger), D(ecimal), F(loat), S(tring), N(ational string).
std::vector<Text> LiteralsOf(std::string_view batch) {
  std::vector<Text> all;
  for (const LiteralToken& literal : TemplateOf(batch).literals) {
    all.push_back(Text(1, "IDFSN"[static_cast<int>(literal.kind)]) + ":" + LiteralText(literal));
  }
  return all;
}

TEST(Lexer, ReadsEveryKindOfLiteral) {
  const struct {
    std::string_view batch;
    std::vector<Text> literals;
  } cases[] = {
      {"0 12 2147483647 2147483648", {"I:0", "I:12", "I:2147483647", "D:2147483648"}},
      {"000000000012 00000000002147483648", {"I:000000000012", "D:00000000002147483648"}},
      {"1.5 .5 5. 1e3 1E+15 2.5e-3", {"D:1.5", "D:.5", "D:5.", "F:1e3", "F:1E+15", "F:2.5e-3"}},
      {"'a' N'a' n'b' '' 'it''s' ''''", {"S:a", "N:a", "N:b", "S:", "S:it's", "S:'"}},
      {"'-- no comment' '/*' '全部'", {"S:-- no comment", "S:/*", "S:全部"}},
      {"a1 @p1 #t1 [2] \"3\" -- 4\n/* 5 /* 6 */ 7 */ 8", {"I:8"}},
      {"1else 2from 3.from", {"I:1", "I:2", "D:3."}},
      {"5,7", {"I:5", "I:7"}},
  };
  for (const auto& c : cases) EXPECT_EQ(LiteralsOf(c.batch), c.literals) << c.batch;
}

TEST(Lexer, ReadsNamesAndSymbols) {
  const std::string_view batch = "dbo.t_FL$1,[a ]]b],\"c \"\"d\",@@identity<>@x!=#t 返利>=1";
  std::vector<Text> texts;
  for (const Token& token : Tokenize(batch)) {
    texts.push_back(token.kind == TokenKind::QuotedName ? QuotedNameText(batch, token) : Text(token.text));
  }
  EXPECT_EQ(texts, (std::vector<Text>{"dbo", ".", "t_FL$1", ",", "a ]b", ",", "c \"d", ",", "@@identity", "<>", "@x",
                                      "!=", "#t", "返利", ">=", "1", ""}));
}

TEST(Lexer, GivesOneTemplateToTextsThatDifferInLiteralsAndWhiteSpaceAlone) {
  const std::string_view same[][2] = {
      {"select * from t where a=1", "select\t*\r\nfrom t -- why\n where a = 22"},
      {"insert into t(a,b) values(1,'x')", "insert into t (a, b)\r\nvalues (2 , 'it''s')"},
      {"update t set a=1", "/* first */update t/**/set a=2"},
      {"select 'a'as b", "select 'c' as b"},
      {"a<>1", "a <> 1"},
      {"select 1", "\xEF\xBB\xBFselect 1"},  // a file's byte order mark
  };
  for (const auto& [left, right] : same) EXPECT_EQ(TemplateOf(left).key, TemplateOf(right).key) << left;
}

TEST(Lexer, GivesTemplatesOfTheirOwnToTextsThatMeanSomethingElse) {
  const std::string_view different[][2] = {
      {"select a1", "select a 1"},                 // a name, or a name and a number
      {"a=1", "a=1.0"},                            // the kinds of literals
      {"a='x'", "a=N'x'"},                         //
      {"select FName as A", "select FName as a"},  // the names of a result's columns
      {"select [a b]", "select [ab]"},             //
      {"a<>1", "a< >1"},                           // one operator, or two
      {"\"a\"\"b\"", "\"a\" \"b\""},               // one name, or two
      {"a=-1", "a=1"},                             //
      {"a b", "ab"},                               //
      {"a/**/b", "ab"},                            //
  };
  for (const auto& [left, right] : different) EXPECT_NE(TemplateOf(left).key, TemplateOf(right).key) << left;
}

// A cached program finds its parameters by the template, and was made from the tokens.
TEST(Lexer, AgreesWithTheTokensOnEveryLiteral) {
  const std::string_view batch =
      "insert into t(a,b,[c 1]) values(1,-2.5,N'x''y') --3\n select 1e3 as \"4\",'五'+f.a /*6*/ where a=.5 and b "
      "in(7,8)";
  const BatchTemplate batch_template = TemplateOf(batch);
  std::vector<Token> literals;
  for (const Token& token : Tokenize(batch)) {
    if (token.kind == TokenKind::Literal) literals.push_back(token);
  }
  ASSERT_EQ(literals.size(), batch_template.literals.size());
  for (std::size_t i = 0; i < literals.size(); ++i) {
    EXPECT_EQ(literals[i].literal, i);
    EXPECT_EQ(literals[i].literal_kind, batch_template.literals[i].kind);
    EXPECT_EQ(literals[i].text, batch_template.literals[i].text);
  }
}

TEST(Lexer, UsesTheMemoryOfATemplateAgain) {
  BatchTemplate batch_template;
  ReadTemplate("select a,b,c from t where d in (1,2,3)", batch_template);
  const char* key = batch_template.key.data();
  ReadTemplate("select 'x'", batch_template);
  EXPECT_EQ(batch_template.key.data(), key);
  EXPECT_EQ(batch_template.literals.size(), 1u);
  EXPECT_EQ(batch_template.key, TemplateOf("select 'y'").key);
}

// What a shape reads is what a template reads: of texts in which pieces of all kinds meet.
TEST(Lexer, ShapesReadWhatTemplatesRead) {
  const std::string_view pieces[] = {"1",   "23", "4.5", "6e7", ".8", "2147483648", "'a'", "'it''s'", "N'b'",
                                     "n''", "''", "N",   "e",   "x",  " ",          "-",   "--",      "\n",
                                     "/*",  "*/", "(",   ",",   ".",  "<",          "=",   "[c]",     "'"};
  std::mt19937 random(7);
  std::size_t same = 0;
  for (int round = 0; round < 200'000; ++round) {
    Text texts[2];
    for (std::size_t i = 0, count = random() % 6 + 1; i < count; ++i) {
      const std::string_view piece = pieces[random() % std::size(pieces)];
      texts[0] += piece;
      texts[1] += random() % 2 == 0 ? piece : pieces[random() % std::size(pieces)];
    }
    BatchTemplate templates[2];
    try {
      for (int i = 0; i < 2; ++i) ReadTemplate(texts[i], templates[i]);
    } catch (const Error&) {
      continue;
    }
    TextShape shape;
    shape.Learn(texts[0], templates[0].literals);
    std::vector<LiteralToken> literals;
    if (!shape.Reads(texts[1], literals)) continue;
    ++same;
    ASSERT_EQ(templates[0].key, templates[1].key) << texts[0] << " and " << texts[1];
    ASSERT_EQ(literals.size(), templates[1].literals.size()) << texts[1];
    for (std::size_t i = 0; i < literals.size(); ++i) {
      ASSERT_EQ(literals[i].text, templates[1].literals[i].text);
      ASSERT_EQ(literals[i].kind, templates[1].literals[i].kind);
      ASSERT_EQ(literals[i].has_doubled_quotes, templates[1].literals[i].has_doubled_quotes);
    }
  }
  EXPECT_GT(same, 5'000u);
}

TEST(Lexer, RefusesWhatCantStandInABatch) {
  const std::string_view cases[][2] = {
      {"select 'abc", "Unclosed quotation mark after the character string 'abc'."},
      {"select 'it''s", "Unclosed quotation mark after the character string 'it''s'."},
      {"select [abc", "Unclosed quotation mark after the character string 'abc'."},
      {"select \"abc", "Unclosed quotation mark after the character string 'abc'."},
      {"select 1 /* /* */", "Missing end comment mark '*/'."},
      {"select ?", "Incorrect syntax near '?'."},
      {"select $12.5", "Incorrect syntax near '$'."},
      {"select 0x1F", "'0X1F' is not supported by an embedded account."},
  };
  for (const auto& [batch, description] : cases) EXPECT_EQ(ErrorOf(batch), description);
}

}  // namespace
}  // namespace rebate::tsql
