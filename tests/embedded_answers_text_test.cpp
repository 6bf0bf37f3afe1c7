#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

class EmbeddedTexts : public EmbeddedAnswers {
 protected:
  EmbeddedTexts() {
    Run("create table t_t (FID int identity primary key, FName nvarchar(20), FCode varchar(6), FFix char(4))");
    Run("insert into t_t (FName, FCode, FFix) values (N'张', 'b', 'ab'), (N'安', 'B1', '中'), (N'北京', 'a', ''), "
        "(N'上海', 'Z', null), (N'广州', '9', null), (N'zeta', '中文', null), (N'Alpha', ' x', null), ('42', '', "
        "null), "
        "(null, null, null)");
  }
};

TEST_F(EmbeddedTexts, LengthsCountBytesOrUnits) {
  Check({{"select len('中文'), datalength('中文'), len(N'中文'), datalength(N'中文'), datalength('a中')", "2,4,2,4,3"},
         {"select len('ab  '), datalength('ab  '), len(N'😀'), datalength(N'😀'), len(''), len(null)", "2,4,2,4,0,NULL"},
         {"select datalength(FFix), len(FFix), FFix + '|' from t_t where FID <= 3", "4,2,ab  |;4,1,中  |;4,0,    |"},
         {"select datalength(5), datalength(cast(5 as bigint)), datalength(getdate()), datalength(1.5), "
          "datalength(cast(1 as money))",
          "4,8,8,5,8"},
         {"select cast('中文字' as varchar(4)), cast('中文字' as varchar(5)), cast(N'中文字' as nvarchar(2)), "
          "cast(N'中文字' as char(5)) + '|', convert(nchar(4), N'中') + '|'",
          "中文,中文,中文,中文 |,中   |"},
         {"declare @v varchar(3), @n nvarchar(2) set @v = '中文' set @n = N'中文字' select @v, @n, datalength(@v)",
          "中,中文,2"},
         {"select left('中文字', 2), right(N'中文字', 2), substring('中文字', 2, 1), left('abc', 0), substring('abc', "
          "-1, 3), substring('abc', 2, 100)",
          "中文,文字,文,,a,bc"},
         {"select datalength(replicate('中', 3)), len(replicate('ab', 5000)), len(replicate(N'a', 5000)), "
          "replicate('a', -1), len(replicate(cast('a' as varchar(max)), 9000))",
          "6,8000,4000,NULL,9000"},
         {"select '[' + space(3) + ']', datalength(space(3)), space(-1), reverse('ab中'), stuff('abcdef', 2, 3, '')",
          "[   ],3,NULL,中ba,aef"},
         {"select '[' + ltrim('  a ') + ']', '[' + rtrim(' a  ') + ']', upper('aｂé'), lower('AＢ')",
          "[a ],[ a],AＢÉ,aｂ"},
         {"select cast('abc' as varchar) + '|', len(cast(replicate('x', 50) as varchar)), len(convert(nvarchar, "
          "replicate('x', 50)))",
          "abc|,30,30"},
         {"select concat('a', null, 1, 2.50), concat(N'中', 'b'), 'a' + null, choose(2, 'a', 'b'), choose(3, 'a', 'b')",
          "a12.50,中b,NULL,b,NULL"},
         {"select ascii('a'), unicode(N'中'), nchar(20013), char(65), str(3.7), str(3.14159, 6, 2), quotename('a]b')",
          "97,20013,中,A,         4,  3.14,[a]]b]"}});
  const char* truncated = "String or binary data would be truncated.";
  CheckRefused(
      {{"insert into t_t (FCode) values ('中文字符')", truncated},
       {"update t_t set FCode = '1234567'", truncated},
       {"update t_t set FCode = FCode + '中中中'", truncated},
       {"update t_t set FFix = '中中中'", truncated},
       {"insert into t_t (FName) values (replicate(N'中', 21))", truncated},
       {"select left('abc', -1)", "Invalid length parameter passed to the LEFT or SUBSTRING function."},
       {"select substring('abc', 1, -1)", "Invalid length parameter passed to the LEFT or SUBSTRING function."}});
  Check({{"insert into t_t (FCode) values ('123456    ') select FCode from t_t where FID > 9 and FCode is not null",
          "123456"}});
}

TEST_F(EmbeddedTexts, EqualityForgetsCaseWidthAndTrailingBlanks) {
  Run("create table t_e (FText nvarchar(20), FNote varchar(20))");
  Run("insert into t_e values (N'Ａbc', 'x'), ('abc  ', 'X '), (N'ＡＢＣ', 'y'), ('abd', 'ｙ'), (' abc', 'z')");
  Check({{"select 1 where N'Ａ' = 'a' and N'１' = '1' and N'（' = '(' and 'a  ' = 'A' and N'ｱ' = N'ア'", "1"},
         {"select 1 where 'é' = 'e'", ""},
         {"select 1 where ' a' = 'a'", ""},
         {"select 1 where N'あ' = N'ア'", ""},
         {"select count(*) from t_e where FText = 'ABC'", "3"},
         {"select count(*) from t_e where FText in ('q', N'ａｂｃ ')", "3"},
         {"select count(*) from t_e where FText <> N'ABC'", "2"},
         {"select count(distinct FText), count(distinct FNote) from t_e", "3,3"},
         {"select count(*) from t_e group by FNote order by min(FNote)", "2;2;1"},
         {"select count(*) from (select FText from t_e union select FText from t_e) x", "3"},
         {"select count(*) from (select distinct FText from t_e) x", "3"},
         {"select count(*) from t_e a join t_e b on a.FText = b.FText", "11"},
         {"select charindex('Ｂ', 'abc'), charindex('b', N'ＡＢＣ'), replace(N'ＡbＡ', 'a', '-'), patindex('%b%', "
          "N'ＡＢ')",
          "2,2,-b-,2"},
         {"select count(*) from t_e where FText like 'a%'", "4"},
         {"select count(*) from t_e where FText like N'％bc'", "0"},
         {"select count(*) from t_e where FText like '[Ａ]b[d]'", "1"},
         {"select 1 where '[x' like '[[]x' and 'a%b' like 'a[%]b' and 'a-b' like 'a[-]b' and 'b' like '[a-c]'", "1"},
         {"select 1 where 'abc' like 'abc '", ""},
         {"select 1 where 'abc ' like 'abc'", "1"},
         {"select case N'Ａ ' when 'a' then 'same' else 'other' end, nullif(N'Ｘ', 'x')", "same,NULL"}});
  Run("create table t_u (FText nvarchar(20) constraint UQ_u unique, FNo int)");
  Run("insert into t_u values ('abc', 1)");
  for (const char* twin : {"N'ＡBC'", "'ABC  '", "'abc'"}) {
    const Error error = Refusal(Text("insert into t_u values (") + twin + ", 2)");
    EXPECT_EQ(error.description,
              "Violation of UNIQUE KEY constraint 'UQ_u'. Cannot insert duplicate key in object 'dbo.t_u'.")
        << twin;
    EXPECT_EQ(error.number, database_error::kConstraint);
  }
}

TEST_F(EmbeddedTexts, OrderGoesByPinyin) {
#if !defined(_WIN32) && !defined(REBATE_HAS_ICU)
  GTEST_SKIP() << "built without ICU, which knows pinyin";
#endif
  Check({{"select FName from t_t order by FName", "NULL;42;Alpha;zeta;安;北京;广州;上海;张"},
         {"select FCode from t_t where FID < 7 order by FCode desc", "中文;Z;B1;b;a;9"},
         {"select min(FName), max(FName) from t_t", "42,张"},
         {"select FName from t_t where FName > N'北京' order by FName", "广州;上海;张"},
         {"select FName from t_t where FName between N'安' and N'广州' order by 1 desc", "广州;北京;安"},
         {"select FName from t_t where FName >= N'张' or FName < 'b' order by FID", "张;Alpha;42"},
         {"select top 2 FName from t_t where FName > 'zz' order by FName", "安;北京"},
         {"select 1 where 'a' < 'B' and 'B' < 'c' and N'一' < N'二' and '10' < '9' and 'a b' < 'ab'", ""},
         {"select 1 where 'a' < 'B' and 'B' < 'c' and N'二' < N'一' and '10' < '9' and '_' < 'a'", "1"},
         {"select case when N'陈' < N'李' and N'李' < N'王' and N'王' < N'赵' then 1 end", "1"},
         {"select FName from t_t where FName > (select FName from t_t where FID = 4) order by FName", "张"}});
  // With a key over the texts the answers are the same.
  Run("create index IX_Name on t_t (FName)");
  Check({{"select FName from t_t where FName >= N'北京' order by FName desc", "张;上海;广州;北京"},
         {"select min(FName) from t_t where FName > 'zeta'", "安"},
         {"select FID from t_t where FName = N'ZETA'", "6"}});
}

}  // namespace
}  // namespace rebate
