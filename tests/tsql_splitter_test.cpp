#include <gtest/gtest.h>

#include <vector>

#include "platform/database/tsql/parse/batch_splitter.h"

namespace rebate::tsql {
namespace {

TEST(BatchSplitter, CutsWhereStatementsBegin) {
  struct {
    const char* batch;
    std::vector<std::string_view> parts;
  } cases[] = {
      {"insert a insert b", {"insert a ", "insert b"}},
      {"begin tran delete a commit tran", {"begin tran ", "delete a ", "commit tran"}},
      {"if x update a else insert b update c", {"if x update a else insert b ", "update c"}},
      {"if x begin update a delete b end else if y delete c delete d",
       {"if x begin update a delete b end else if y delete c ", "delete d"}},
      {"insert a select case when 1=1 then 2 end delete b", {"insert a select case when 1=1 then 2 end ", "delete b"}},
      {"insert a values ('delete '' x') --update\n delete [insert]",
       {"insert a values ('delete '' x') --update\n ", "delete [insert]"}},
      {"/* delete /* x */ */ delete a where (select 1 if) delete b",
       {"/* delete /* x */ */ ", "delete a where (select 1 if) ", "delete b"}},
      {"begin  /* tran */ -- work\n transaction x delete a if y begin tran commit tran delete b",
       {"begin  /* tran */ -- work\n transaction x ", "delete a ", "if y begin tran ", "commit tran ", "delete b"}},
      {"insert a with (tablock) values (1) delete b with /* no cte */(rowlock)",
       {"insert a with (tablock) values (1) ", "delete b with /* no cte */(rowlock)"}},
      {"set nocount on insert a print 'x' insert b", {"set nocount on ", "insert a ", "print 'x' ", "insert b"}},
      {"select @@identity delete b", {"select @@identity ", "delete b"}},
  };
  for (const auto& one : cases) EXPECT_EQ(SplitBatch(one.batch), one.parts) << one.batch;
}

// What makes or changes objects, jumps, raises, keeps variables or puts common tables in front.
TEST(BatchSplitter, LeavesWholeWhatCantBeCutSafely) {
  for (const char* batch : {
           "declare @x int delete a delete b",
           "delete a where b=@x delete b",
           "drop table if exists a delete b",
           "create table a(b int) insert a values(1) insert a values(2)",
           "alter table a add b int insert a values(1)",
           "insert a values(1);with c as (select 1 a) insert b select a from c",
           "with c(x) as (select 1) delete from c delete b",
           "insert a values(1) with",
           "raiserror('x',16,1) delete a",
           "delete a;throw 50000,'x',1;delete b",
           "merge a using b on 1=1 when matched then update set x=1 when not matched then insert values(1);",
           "begin try delete a end try begin catch delete b end catch delete c",
           "delete a goto x delete b x: delete c",
           "save tran a delete b",
           "while 1=1 begin delete a break end delete b",
           "delete a return delete b",
       }) {
    EXPECT_EQ(SplitBatch(batch), std::vector<std::string_view>{batch});
  }
}

}  // namespace
}  // namespace rebate::tsql
