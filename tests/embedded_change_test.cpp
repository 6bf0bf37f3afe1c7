#include "tests/embedded_kit.h"

namespace rebate {
namespace {

class EmbeddedChange : public EmbeddedTest {
 protected:
  EmbeddedChange() {
    Run("create table t_c (FID int identity(1,1) primary key, FName nvarchar(5), FCode varchar(3) not null default "
        "'x', "
        "FInt int, FSmall smallint, FRate decimal(10,2), FDate datetime, FTwice as FInt * 2, FSame as FID)");
    Run("create table t_k (FKey int not null primary key, FMark nvarchar(5) unique)");
    Run("create unique index IX_k_Both on t_k (FKey, FMark)");
  }
};

TEST_F(EmbeddedChange, ConvertsWhatItAssigns) {
  Run("insert into t_c (FName, FInt, FRate, FDate) values (12, '', 1.005, '')");
  Run("insert into t_c (FName, FInt, FRate, FDate) values ('ab     ', ' 7 ', '-1.995', '2024-05-06 07:08:09')");
  Run("insert into t_c (FName, FInt, FRate) select N'中文字符呀', '3', 2.5");
  EXPECT_EQ(Rows("select FName, FInt, FRate, FDate, FCode, FTwice, FSame from t_c order by FID"),
            "12,0,1.01,1900-01-01,x,0,1;ab   ,7,-2,2024-05-06 07:08:09,x,14,2;中文字符呀,3,2.5,NULL,x,6,3");
  Run("update t_c set FRate = FRate * 1.1, FName = FInt where FID = 3");
  EXPECT_EQ(Rows("select FRate, FName from t_c where FSame = 3"), "2.75,3");
}

TEST_F(EmbeddedChange, RefusesWhatDoesNotFit) {
  struct {
    const char* text;
    const char* description;
    Long number = database_error::kStatement;
  } cases[] = {
      {"insert into t_c (FName) values ('123456')", "String or binary data would be truncated."},
      {"insert into t_c (FName) select '1234' + '56'", "String or binary data would be truncated."},
      {"insert into t_c (FInt) values ('abc')",
       "Conversion failed when converting the varchar value 'abc' to data type int."},
      {"insert into t_c (FInt) values (3000000000)",
       "Arithmetic overflow error converting expression to data type int."},
      {"insert into t_c (FSmall) values (40000)", "Arithmetic overflow error for data type smallint, value = 40000."},
      {"insert into t_c (FRate) values ('')", "Error converting data type varchar to numeric."},
      {"insert into t_c (FRate) values (123456789)", "Arithmetic overflow error converting int to data type numeric."},
      {"insert into t_c (FID) values (9)",
       "Cannot insert explicit value for identity column in table 't_c' when IDENTITY_INSERT is set to OFF."},
      {"insert into t_c (FTwice) values (9)",
       "The column \"FTwice\" cannot be modified because it is either a computed column or is the result of a UNION "
       "operator."},
      {"insert into t_c (FInt, FName) values (1)",
       "There are more columns in the INSERT statement than values specified in the VALUES clause. The number of "
       "values "
       "in the VALUES clause must match the number of columns specified in the INSERT statement."},
      {"insert into t_k values (1)", "Column name or number of supplied values does not match table definition."},
      {"insert into t_c (FCode) values (null)",
       "Cannot insert the value NULL into column 'FCode', table 'account.dbo.t_c'; column does not allow nulls. INSERT "
       "fails.",
       database_error::kConstraint},
      {"insert into t_k values (1, 'a'), (1, 'b')",
       "Violation of PRIMARY KEY constraint 'PK_t_k'. Cannot insert duplicate key in object 'dbo.t_k'.",
       database_error::kConstraint},
      {"insert into t_k values (1, 'a'), (2, 'A ')",
       "Violation of UNIQUE KEY constraint 'UQ_t_k_FMark'. Cannot insert duplicate key in object 'dbo.t_k'.",
       database_error::kConstraint},
      {"update t_c set FID = 5", "Cannot update identity column 'FID'."},
      {"update t_c set Nope = 5", "Invalid column name 'Nope'."},
  };
  for (const auto& one : cases) {
    const Error error = Refusal(one.text);
    EXPECT_EQ(error.description, one.description) << one.text;
    EXPECT_EQ(error.number, one.number) << one.text;
  }
  EXPECT_EQ(Rows("select count(*) from t_c"), "0");
  EXPECT_EQ(Rows("select count(*) from t_k"), "0");
  Run("create index IX_c_Int on t_c (FInt) create unique index UX_c_Int on t_c (FInt) insert into t_c (FInt) values "
      "(1)");
  EXPECT_EQ(Refusal("insert into t_c (FInt) values (1)").description,
            "Cannot insert duplicate key row in object 'dbo.t_c' with unique index 'UX_c_Int'.");
  EXPECT_TRUE(Refusal("insert into t_k (FKey, fkey) values (1, 2)")
                  .description.starts_with("The column name 'fkey' is specified more than once in the SET clause"));
}

TEST_F(EmbeddedChange, MeasuresOneColumnForAnother) {
  Run("create table t_l (FLong nvarchar(9), FCode varchar(9)) insert into t_l values ('123456', 'abcd')");
  Run("insert into t_c (FInt) values (1)");
  for (const char* text :
       {"insert into t_c (FName) select FLong from t_l", "insert into t_c (FCode) select FCode from t_l",
        "update t_c set FName = FLong from t_l", "update t_c set FCode = l.FCode from t_l l"}) {
    EXPECT_EQ(Refusal(text).description, "String or binary data would be truncated.") << text;
  }
  EXPECT_EQ(Rows("select FName, FCode from t_c"), "NULL,x");
}

TEST_F(EmbeddedChange, DrawsNumbersThatNeverComeBack) {
  Run("insert into t_c (FInt) values (1) insert into t_c (FInt) values (2)");
  EXPECT_EQ(Rows("select @@identity as FNew, scope_identity(), @@rowcount"), "2,2,1");
  Run("delete from t_c where FID = 2");
  Run("insert into t_c (FInt) select FInt from t_c");
  EXPECT_EQ(Rows("select @@identity"), "3");
  Run("insert into t_k values (5, null)");
  EXPECT_EQ(Rows("select @@identity"), "NULL");
  Run("select FID, FInt into t_copy from t_c");
  EXPECT_EQ(Rows("select @@identity"), "3");
  Run("set identity_insert t_c on insert into t_c (FID, FInt) values (50, 1) set identity_insert t_c off");
  Run("insert into t_c default values");
  EXPECT_EQ(Rows("select max(FID) from t_c"), "51");
  Run("truncate table t_c insert into t_c default values");
  EXPECT_EQ(Rows("select FID from t_c"), "1");
}

TEST_F(EmbeddedChange, ChangesThroughJoins) {
  Run("insert into t_k values (1, 'a'), (2, 'b'), (3, null)");
  Run("insert into t_c (FInt, FName) values (1, 'p'), (2, 'q'), (7, 'r')");
  Run("update c set c.FName = k.FMark from t_c c inner join t_k k on k.FKey = c.FInt where k.FKey <> 2");
  EXPECT_EQ(Rows("select FName from t_c order by FID"), "a;q;r");
  Run("update c set FName = isnull(k.FMark, 'none') from t_c c left join t_k k on k.FKey = c.FInt");
  EXPECT_EQ(Rows("select FName from t_c order by FID"), "a;b;none");
  Run("update t_c set FInt = k.FKey * 10 from t_k k where k.FMark = t_c.FName");
  EXPECT_EQ(Rows("select FInt from t_c order by FID"), "10;20;7");
  Run("delete c from t_c c inner join t_k k on k.FMark = c.FName where k.FKey = 1");
  Run("delete from t_c where not exists (select 1 from t_k where FMark = FName)");
  EXPECT_EQ(Rows("select FName, @@rowcount from t_c"), "b,1");
  Run("declare @n int set @n = 0 update c set @n = @n + 1, FInt = @n from t_c c inner join t_k k on k.FKey > 0");
  EXPECT_EQ(Rows("select FInt from t_c"), "1") << "a row that is found three times is changed once";
}

TEST_F(EmbeddedChange, LeavesNothingOfARefusedStatement) {
  EXPECT_NE(
      Refusal("insert into t_k values (1, 'a') insert into t_k select 2, 'b' union all select 1, 'c' insert into t_k "
              "values (9, 'z')")
          .number,
      0);
  EXPECT_EQ(Rows("select FKey from t_k"), "1");
  EXPECT_NE(Refusal("insert into t_k values (5, 'e') insert into t_k values (6, 'f'").number, 0);
  EXPECT_EQ(Rows("select count(*) from t_k"), "1") << "a batch that doesn't parse runs nothing";
  EXPECT_EQ(Refusal("insert into t_k values (7, 'g') select * from nosuch").description,
            "Invalid object name 'nosuch'.");
  EXPECT_EQ(Rows("select count(*) from t_k"), "2") << "a missing name is found when its statement runs";
}

}  // namespace
}  // namespace rebate
