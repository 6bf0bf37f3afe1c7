#pragma once

#include "tests/embedded_kit.h"

namespace rebate {

// What a text is answered with: rows as EmbeddedTest writes them, or a refusal.
struct Answer {
  const char* text;
  const char* expected;
};

// The texts run one behind the other on one account, each as a batch of its own.
class EmbeddedAnswers : public EmbeddedTest {
 protected:
  void Check(std::initializer_list<Answer> answers) {
    for (const Answer& one : answers) {
      try {
        EXPECT_EQ(Rows(one.text), one.expected) << one.text;
      } catch (const Error& error) {
        ADD_FAILURE() << one.text << ": " << error.description;
      }
    }
  }

  void CheckRefused(std::initializer_list<Answer> answers, Long number = database_error::kStatement) {
    for (const Answer& one : answers) {
      const Error error = Refusal(one.text);
      EXPECT_EQ(error.description, one.expected) << one.text;
      EXPECT_EQ(error.number, number) << one.text;
    }
  }

  // Expressions with "precision,scale text" of their values, the type as a select into keeps it.
  void CheckShapes(std::initializer_list<Answer> answers) {
    for (const Answer& one : answers) {
      try {
        Run(Text("select ") + one.text + " as v into t_shape");
        const Text shape = Rows(
            "select numeric_precision, numeric_scale from information_schema.columns where table_name = 't_shape'");
        EXPECT_EQ(shape + ' ' + Rows("select cast(v as varchar(60)) from t_shape"), one.expected) << one.text;
        Run("drop table t_shape");
      } catch (const Error& error) {
        ADD_FAILURE() << one.text << ": " << error.description;
      }
      // The value where it stands has the same digits.
      EXPECT_TRUE(Text(one.expected).ends_with(Rows(Text("select ' ' + cast(") + one.text + " as varchar(60))")))
          << one.text;
    }
  }
};

}  // namespace rebate
