#include <gtest/gtest.h>

#include <string>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/parse/parser.h"
#include "tests/tsql_dump.h"

namespace rebate::tsql {
namespace {

Text TreeOf(std::string_view batch) {
  try {
    return Dump::Of(Parse(batch));
  } catch (const Error& error) {
    EXPECT_EQ(error.number, database_error::kStatement);
    EXPECT_EQ(error.source, "Transact-SQL");
    return "error: " + error.description;
  }
}

struct Case {
  std::string_view batch;
  std::string_view tree;
};

template <std::size_t Count>
void ExpectTrees(const Case (&cases)[Count]) {
  for (const Case& c : cases) EXPECT_EQ(TreeOf(c.batch), c.tree) << c.batch;
}

template <std::size_t Count>
void ExpectErrors(const Case (&cases)[Count]) {
  for (const Case& c : cases) EXPECT_EQ(TreeOf(c.batch), "error: " + Text(c.tree)) << c.batch;
}

Text Repeat(std::string_view text, int times) {
  Text all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(Parser, BindsOperatorsAsTheServerDoes) {
  ExpectTrees({
      {"select a+b*c-d%2", "[(- (+ a (* b c)) (% d #0))]"},
      {"select a|b+c&d^e", "[(^ (& (+ (| a b) c) d) e)]"},
      {"select -a*~b+ +1", "[(+ (* (- a) (~ b)) (+ #0))]"},
      {"select 1 where not a=1 and b=2 or c=3", "[#0 where:(or (and (not (= a #1)) (= b #2)) (= c #3))]"},
      {"select 1 where not(a=1 or (b)=2)", "[#0 where:(not (or (= a #1) (= b #2)))]"},
      {"select 1 where a=1 and b=2 and c=3 and d=4 and e=5",
       "[#0 where:(and (and (and (= a #1) (= b #2)) (= c #3)) (and (= d #4) (= e #5)))]"},
      {"select 1 where a!<1 and b!>2 and c!=3", "[#0 where:(and (and (>= a #1) (<= b #2)) (<> c #3))]"},
      {"select 1 where a+1 between b and c+2 and d=1", "[#0 where:(and (between (+ a #1) b (+ c #2)) (= d #3))]"},
      {"select 1 where a not between 1 and 2", "[#0 where:(not-between a #1 #2)]"},
      {"select 1 where a in (1,b+1) and c not in (select x from t)",
       "[#0 where:(and (in a: #1 (+ b #2)) (not-in c [x from:t]))]"},
      {"select 1 where a like '%'+b+'%' and c not like 'x' escape '!'",
       "[#0 where:(and (like a (+ (+ #1 b) #2)) (not-like c #3 escape:#4))]"},
      {"select 1 where a is null or b+1 is not null", "[#0 where:(or (null a) (not-null (+ b #1)))]"},
      {"select 1 where not exists(select * from t) and 1=1", "[#0 where:(and (not (exists [* from:t])) (= #1 #2))]"},
  });
}

TEST(Parser, ReadsExpressions) {
  ExpectTrees({
      {"select case a when 1 then 'x' else null end, case when a=1 then 2 end",
       "[(case of:a #0->#1 else:null),(case (= a #2)->#3)]"},
      {"select iif(a=1,2,3)", "[(case (= a #0)->#1 else:#2)]"},
      {"select count(*),count(distinct a),max(all b),left(c,1),coalesce(d,null),getdate()",
       "[count(*),count(distinct a),max( b),left( c #0),coalesce( d null),getdate()]"},
      {"select dateadd(day,1,a),DATEDIFF(mm,a,b),datepart([year],c),current_timestamp",
       "[dateadd(day #0 a),DATEDIFF(mm a b),datepart(year c),current_timestamp()]"},
      {"select cast(a as varchar),cast(a as decimal(10,2)),convert(nvarchar(20),a,121),convert([int],'5')",
       "[(cast a varchar(30)),(cast a decimal10.2),(convert a nvarchar(20) style:#3),(convert #4 int)]"},
      {"select try_cast(a as date),TRY_CONVERT(datetime2(3),a,@@datefirst)",
       "[(try-cast a date),(try-convert a datetime2.3 style:@@datefirst)]"},
      {"select concat(a,1),choose(1,a,b),db_name(),degrees(a)",
       "[concat( a #0),choose( #1 a b),db_name(),degrees( a)]"},
      {"select a,b.a,dbo.b.a,db..b.a,[x y].\"a b\"", "[a,b.a,b.a,b.a,x y.a b]"},
      {"select (select max(a) from t)+1", "[(+ [max( a) from:t] #0)]"},
      {"select @@identity,@@RowCount,@@version,@@spid,@@servername,@@language",
       "[@@identity,@@RowCount,@@version,@@spid,@@servername,@@language]"},
  });
}

TEST(Parser, ReadsTypes) {
  ExpectTrees({
      {"declare @a smallmoney,@b smalldatetime,@c datetime2,@d datetime2(0),@e real,@f float(24),@g float(53)",
       "declare @a:smallmoney; declare @b:smalldatetime; declare @c:datetime2.7; declare @d:datetime2.0; declare "
       "@e:real; declare @f:real; declare @g:float"},
      {"declare @a dec,@b numeric(5),@c nvarchar(max),@d text,@e sysname,@f double precision,@g character varying(9),"
       "@h national character(3)",
       "declare @a:decimal18.0; declare @b:decimal5.0; declare @c:nvarchar(-1); declare @d:varchar(-1); declare "
       "@e:nvarchar(128); declare @f:float; declare @g:varchar(9); declare @h:nchar(3)"},
  });
  ExpectErrors({
      {"declare @a foo", "Cannot find data type foo."},
      {"declare @a nvarchar(5000)", "The size (5000) given exceeds the maximum allowed (4000)."},
      {"declare @a varchar(0)", "Length or precision 0 is invalid."},
      {"declare @a decimal(5,6)", "The scale (6) must be less than or equal to the precision (5)."},
      {"declare @a decimal(5,4294967296)", "The scale (4294967296) must be less than or equal to the precision (5)."},
      {"declare @a datetime2(8)", "Specified scale 8 is invalid."},
  });
}

TEST(Parser, ReadsSelectLists) {
  ExpectTrees({
      {"select *,a.*,dbo.a.*,b from a", "[*,a.*,a.*,b from:a]"},
      {"select a x,a as y,a [z z],a \"w\",a as 'it''s',a 'u',v=a+1,'w'=b",
       "[a as x,a as y,a as z z,a as w,a as it's,a as u,(+ a #2) as v,b as w]"},
      {"select distinct top 5 a from t", "[distinct top:#0 a from:t]"},
      {"select all top (5+1) percent a from t", "[top:(+ #0 #1)% a from:t]"},
      {"select top 1 1  FROM t", "[top:#0 #1 from:t]"},
      {"select a into #x from t where 1=0", "[a into:#x from:t where:(= #0 #1)]"},
      {"select a,count(*) from t group by a,b+1 having count(*)>1 order by a desc,2 asc",
       "[a,count(*) from:t group:a group:(+ b #0) having:(> count(*) #1)] order:a- order:#2"},
  });
}

TEST(Parser, ReadsTableSources) {
  ExpectTrees({
      {"select * from a,b x,dbo.c as y", "[* from:a, b x, dbo.c y]"},
      {"select * from tempdb..#t,db.owner.t [u v]", "[* from:tempdb..#t, db.owner.t u v]"},
      {"select * from a join b on a.x=b.x left outer join c on 1=1 cross join d",
       "[* from:(cross (left (inner a, b on:(= a.x b.x)), c on:(= #0 #1)), d)]"},
      {"select * from a full join (b right join c on 1=1) on 2=2",
       "[* from:(full a, (right b, c on:(= #0 #1)) on:(= #2 #3))]"},
      {"select * from a left join b join c on 1=1 on 2=2", "[* from:(left a, (inner b, c on:(= #0 #1)) on:(= #2 #3))]"},
      {"select * from (select a from t) x,((select 1 a) union all (select 2)) as y",
       "[* from:{[a from:t]} x, {[#0 as a] union-all [#1]} y]"},
      {"select * from information_schema.tables,sys.objects o,[dbo].[sysobjects],master..x",
       "[* from:information_schema.tables, sys.objects o, dbo.sysobjects, master..x]"},
      {"select * from (select 1,2) as x (a,[b c])", "[* from:{[#0,#1]} x(a,b c)]"},
      {"select * from a with (nolock) join b (NOLOCK) on 1=1,c x with(index(i),rowlock)",
       "[* from:(inner a, b on:(= #0 #1)), c x]"},
  });
}

TEST(Parser, ReadsCommonTables) {
  ExpectTrees({
      {"with c as (select 1 a),[d e](x,y) as ((select a,2 from c) union select 3,4) select * from c,[d e]",
       "with c{[#0 as a]} with d e(x,y){[a,#1 from:c] union [#2,#3]} [* from:c, d e]"},
      {"select 1;with c as (select top 5 a from t order by a) insert into u select a from c",
       "[#0]; with c{[top:#1 a from:t] order:a} insert u() [a from:c]"},
      {"begin with c as (select 1 a) update c set a=2 end;with c as (select 1 a) delete from c where a=1",
       "with c{[#0 as a]} update c a:=#1; with c{[#2 as a]} delete c where:(= a #3)"},
      {"if 1=1 with c as (select 1 a) select * from c", "if (= #0 #1) {with c{[#2 as a]} [* from:c]}"},
      {"create view v as with c as (select 1 a) select a from c;",
       "view v() with c{[#0 as a]} [a from:c] <with c as (select 1 a) select a from c>"},
  });
  constexpr std::string_view kOpenBefore =
      "Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces "
      "clause or a change tracking context clause, the previous statement must be terminated with a semicolon.";
  ExpectErrors({
      {"select 1 with c as (select 1 a) select * from c", kOpenBefore},
      {"select ';' with c as (select 1 a) select * from c", kOpenBefore},
      {"begin delete t with c as (select 1 a) select * from c end", kOpenBefore},
      {"select * from (with c as (select 1 a) select * from c) x", "Incorrect syntax near the keyword 'with'."},
      {"insert into t with c as (select 1 a) select * from c", "Incorrect syntax near the keyword 'with'."},
      {"with c as (select 1 a),C as (select 2 a) select 1",
       "Duplicate common table expression name 'C' was specified."},
      {"with c as (select a from t order by a) select * from c",
       "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table "
       "expressions, unless TOP, OFFSET or FOR XML is also specified."},
      {"with c as (select 1 a)", "Incorrect syntax near ')'."},
      {"with c as (select 1 a) truncate table c", "Incorrect syntax near the keyword 'truncate'."},
  });
}

TEST(Parser, JoinsQueriesWithSetOperators) {
  ExpectTrees({
      {"select 1 union select 2 except select 3 order by 1", "[#0] union [#1] except [#2] order:#3"},
      {"select 1 union all select 2 intersect select 3", "[#0] union-all [* from:{[#1] intersect [#2]} operand]"},
      {"select 1 intersect select 2 union select 3", "[#0] intersect [#1] union [#2]"},
      {"select 1 except (select 2 union select 3)", "[#0] except [* from:{[#1] union [#2]} operand]"},
      {"(select 1 union select 2) intersect select 3", "[* from:{[#0] union [#1]} operand] intersect [#2]"},
  });
}

TEST(Parser, ReadsChangesOfRows) {
  ExpectTrees({
      {"insert t values(1,default)", "insert t() row: #0 -"},
      {"insert into dbo.t with (tablock) (a,[b]) values(1,2),(3,null)", "insert dbo.t(a,b) row: #0 #1 row: #2 null"},
      {"insert into t select a from u order by a", "insert t() [a from:u] order:a"},
      {"insert into t(a) (select 1 union select 2)", "insert t(a) [#0] union [#1]"},
      {"insert t default values", "insert t() default"},
      {"update t set a=1,t.b=b+1,c=default where d=1", "update t a:=#0 t.b:=(+ b #1) c:=- where:(= d #2)"},
      {"update t set a+=1,b-=-2", "update t a:=(+ a #0) b:=(- b (- #1))"},
      {"declare @v int update t set @v=a,@v=b=2,@v=t.b+=@v,@v-=1,@v=a+1",
       "declare @v:int; update t @v:=a @v=b:=#0 @v=t.b:=(+ t.b @v) @v:=(- @v #1) @v:=(+ a #2)"},
      {"insert top (5) into t(a) select a from u", "insert top:#0 t(a) [a from:u]"},
      {"update top (@@rowcount+1) percent t set a=1", "update top:(+ @@rowcount #0)% t a:=#1"},
      {"delete top (1) from a from t a", "delete top:#0 a from:t a"},
      {"update a set x=b.x from t a inner join u b on a.k=b.k where b.f=1",
       "update a x:=b.x from:(inner t a, u b on:(= a.k b.k)) where:(= b.f #0)"},
      {"delete t", "delete t"},
      {"delete from t where a=1 delete a from t a,u b where a.x=b.x",
       "delete t where:(= a #0); delete a from:t a, u b where:(= a.x b.x)"},
      {"truncate table dbo.t", "truncate dbo.t"},
  });
}

TEST(Parser, ReadsDefinitions) {
  ExpectTrees({
      {"create table t(a int identity primary key clustered,b nvarchar(20) not null default N'x',c as a*2 persisted,"
       "d decimal(28,10) null constraint df default (0),e datetime unique,)",
       "table t a:int!identity1/1 b:nvarchar(20)!=#1 c:?as(* a #2) d:decimal28.10?=#5 e:datetime? primary(a) "
       "unique(e)"},
      {"create table dbo.[t u](a int identity(-5,+2),b int,constraint pk primary key nonclustered (a asc,b "
       "desc),unique(b)) on [primary]",
       "table dbo.t u a:int!identity-5/2 b:int! primary:pk(a,b) unique(b)"},
      {"create table t(a int constraint pk primary key constraint ck check(a>0 or a=-1),b int check (b in (1,2)) "
       "constraint nn not null,constraint c2 check(a<b),check((a)<>5))",
       "table t a:int! b:int! primary:pk(a) check:ck@a(or (> a #0) (= a (- #1))) check@b(in b: #2 #3) check:c2(< a b) "
       "check(<> a #4)"},
      {"alter table dbo.t add a int not null default 0,constraint u unique(a),b as a+1 alter table t with check add "
       "check(a>0)",
       "alter dbo.t a:int!=#0 b:?as(+ a #1) unique:u(a); alter t check(> a #2)"},
      {"create unique clustered index i on dbo.t(a,b desc)", "unique-index i dbo.t(a,b)"},
      {"create view v(x,y) as select a,'it''s' from t -- all\n order by a",
       "error: The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table "
       "expressions, unless TOP, OFFSET or FOR XML is also specified."},
      {"create view v(x,y) as\n select a, -- both\n 'it''s' from [t] -- all\n;",
       "view v(x,y) [a,#0 from:t] <select a, -- both\n 'it''s' from [t]>"},
      {"create view v as select 'x'", "view v() [#0] <select 'x'>"},
      {"drop table a,dbo.#b drop view if exists v", "drop-table a dbo.#b; drop-view? v"},
      {"drop index t.i drop index i on dbo.t", "drop-index t.i; drop-index i on t"},
  });
}

TEST(Parser, ReadsControlOfFlow) {
  ExpectTrees({
      {"if 1=1 select 1; else if 2=2 begin select 2 select 3 end else print 'x'",
       "if (= #0 #1) {[#2]} else {if (= #3 #4) {[#5]; [#6]} else {print #7}}"},
      {"declare @a int,@b nvarchar(max)=N'x' set @A=1 set @b+='y' while @a<5 begin set @a=@a+1 if @a=3 break continue "
       "end",
       "declare @a:int; declare @b:nvarchar(-1)=#0; set @A:=#1; set @b:=(+ @b #2); while (< @a #3) {set @a:=(+ @a #4); "
       "if (= @a #5) {break}; continue}"},
      {"declare @a as int select @a=max(a),@a=@a+1 from t", "declare @a:int; [@a:=max( a),@a:=(+ @a #0) from:t]"},
      {"set nocount on set ansi_nulls,quoted_identifier on;;set identity_insert dbo.t off",
       "option nocount on; option ansi_nulls on; option quoted_identifier on; option identity_insert dbo.t off"},
      {"set transaction isolation level read uncommitted return", "option transaction isolation level on; return"},
      {"begin tran x update t set a=1 commit transaction x begin transaction rollback tran commit rollback work",
       "begin x; update t a:=#0; commit; begin; rollback; commit; rollback"},
      {"declare @n varchar(9) begin tran @n commit work rollback transaction [a b] commit tran rollback",
       "declare @n:varchar(9); begin @n; commit; rollback a b; commit; rollback"},
      {"", ""},
      {" -- nothing\n ; ", ""},
  });
}

TEST(Parser, ReadsMessagesAndErrors) {
  ExpectTrees({
      {"print 'a'+cast(1 as varchar) print @@rowcount", "print (+ #0 (cast #1 varchar(30))); print @@rowcount"},
      {"declare @m varchar(9) raiserror(@m,16,-1) raiserror('%s %d',10,1,N'x',null,-5) with nowait,log select 1",
       "declare @m:varchar(9); raise @m #1 (- #2); raise #3 #4 #5 #6 null (- #7); [#8]"},
      {"if 1=1 throw 50000,'x',1;else raiserror('y',16,1)", "if (= #0 #1) {throw #2 #3 #4} else {raise #5 #6 #7}"},
  });
  ExpectErrors({
      {"raiserror 50001 'x'", "Incorrect syntax near '50001'."},
      {"raiserror('x',16)", "Incorrect syntax near ')'."},
      {"raiserror('x'+'y',16,1)", "Incorrect syntax near '+'."},
      {"raiserror('x',16,1) with nowait,wait", "Incorrect syntax near 'wait'."},
      {"raiserror('x',16,1,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21)",
       "Too many substitution parameters for RAISERROR. Cannot exceed 20 substitution parameters."},
      {"throw 50000,'x'", "Incorrect syntax near 'x'."},
      {"begin tran;throw;",
       "To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW statement inside a "
       "CATCH block, or add error parameters to the THROW statement."},
  });
}

TEST(Parser, FixesTheLiteralsThatItReads) {
  EXPECT_EQ(Parse("select a as 'x',cast(1 as varchar(20)),2").fixed_literals, (std::vector<std::size_t>{0, 2}));
  EXPECT_EQ(Parse("create table t(a int identity(1,2),b decimal(9,3) default 5)").fixed_literals,
            (std::vector<std::size_t>{0, 1, 2, 3}));
  EXPECT_EQ(Parse("create view v as select 1 a,'x' b").fixed_literals, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(Parse("select cast(1 as datetime2(3)) raiserror('x',1,1)").fixed_literals, (std::vector<std::size_t>{1}));
  EXPECT_TRUE(
      Parse("insert into t(a,b) values(1,'x') select top 5 a from t where b like '%x%'").fixed_literals.empty());
}

TEST(Parser, SaysWhereTheSyntaxIsWrong) {
  ExpectErrors({
      {"select * from t where a in ()", "Incorrect syntax near ')'."},
      {"select * from t where a = ", "Incorrect syntax near '='."},
      {"select a from from t", "Incorrect syntax near the keyword 'from'."},
      {"select a, From t", "Incorrect syntax near the keyword 'From'."},
      {"select * from t a And b=1", "Incorrect syntax near the keyword 'And'."},
      {"select a=b=c", "Incorrect syntax near '='."},
      {"select 1=1", "Incorrect syntax near '='."},
      {"select (a=1)", "Incorrect syntax near ')'."},
      {"select 1 where (a=1)+1=2", "Incorrect syntax near '+'."},
      {"select 1 where a=b=c", "Incorrect syntax near '='."},
      {"insert into t(a) values('it's')", "Unclosed quotation mark after the character string ')'."},
      {"insert into t(a) values('O'Neil')", "Unclosed quotation mark after the character string ')'."},
      {"insert into t(a) values(1", "Incorrect syntax near '1'."},
      {"insert into t(a) values(5,,7)", "Incorrect syntax near ','."},
      {"insert into t(a,b) values(abc,12%)", "Incorrect syntax near ')'."},
      {"update t set where a=1", "Incorrect syntax near the keyword 'where'."},
      {"select * from (select 1 a)", "Incorrect syntax near ')'."},
      {"select * from (select 1 a into #t) x", "Incorrect syntax near the keyword 'into'."},
      {"begin end", "Incorrect syntax near the keyword 'end'."},
      {"begin select 1", "Incorrect syntax near '1'."},
      {"else select 1", "Incorrect syntax near the keyword 'else'."},
      {"select 1 select 2)", "Incorrect syntax near ')'."},
      {"select case end", "Incorrect syntax near the keyword 'end'."},
      {"insert top 5 into t select 1", "Incorrect syntax near '5'."},
      {"delete top (5) with ties from t", "Incorrect syntax near the keyword 'with'."},
      {"declare @v int update t set @v=a=default", "Incorrect syntax near the keyword 'default'."},
      {"create table t(a int,constraint x b int)", "Incorrect syntax near 'b'."},
      {"create table t(a int check a>0)", "Incorrect syntax near 'a'."},
      {"alter table t add column a int", "Incorrect syntax near the keyword 'column'."},
      {"alter table t add a int,", "Incorrect syntax near ','."},
      {"create table t()", "Incorrect syntax near ')'."},
      {"drop table", "Incorrect syntax near 'table'."},
      {"bad", "Could not find stored procedure 'bad'."},
      {"selec 1", "Could not find stored procedure 'selec'."},
      {"this is no statement", "Incorrect syntax near the keyword 'is'."},
      {"select 1; nonsense", "Incorrect syntax near 'nonsense'."},
  });
}

TEST(Parser, ChecksWhatABatchMustNotSay) {
  ExpectErrors({
      {"select 1 where 1",
       "An expression of non-boolean type specified in a context where a condition is expected, near '1'."},
      {"select 1 where a=1 and b order by 1",
       "An expression of non-boolean type specified in a context where a condition is expected, near 'order'."},
      {"set @a=1", "Must declare the scalar variable \"@a\"."},
      {"select @@nothing", "Must declare the scalar variable \"@@nothing\"."},
      {"create table t(a int null,b int,primary key(b,A))",
       "Cannot define PRIMARY KEY constraint on nullable column in table 't'."},
      {"alter table t add a int primary key null",
       "Cannot define PRIMARY KEY constraint on nullable column in table 't'."},
      {"create table t(a int identity(1,0))", "Identity column 'a' contains invalid INCREMENT."},
      {"create table t(a int check(a))",
       "An expression of non-boolean type specified in a context where a condition is expected, near ')'."},
      {"declare @a int declare @A int",
       "The variable name '@A' has already been declared. Variable names must be unique within a query batch or stored "
       "procedure."},
      {"declare @a int select @a=1,b from t",
       "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations."},
      {"insert into t(a,b) values(1)",
       "There are more columns in the INSERT statement than values specified in the VALUES clause. The number of "
       "values "
       "in the VALUES clause must match the number of columns specified in the INSERT statement."},
      {"insert into t values(1,2),(3)",
       "The number of columns for each row in a table value constructor must be the same."},
      {"break", "Cannot use a BREAK statement outside the scope of a WHILE statement."},
      {"select 1 create view v as select 1", "'CREATE VIEW' must be the first statement in a query batch."},
  });
}

TEST(Parser, RefusesByNameWhatLiesOutside) {
  const std::string_view cases[][2] = {
      {"merge t using u on 1=1 when matched then delete;", "MERGE"},
      {"alter view v as select 1", "ALTER VIEW"},
      {"alter table t drop column a", "ALTER TABLE DROP"},
      {"alter table t alter column a int", "ALTER TABLE ALTER COLUMN"},
      {"alter table t nocheck constraint all", "ALTER TABLE NOCHECK"},
      {"alter table t with nocheck add check(a>0)", "WITH NOCHECK"},
      {"alter table t add constraint d default 0 for a", "DEFAULT FOR"},
      {"create table t(a int identity(1,1) not for replication)", "NOT FOR REPLICATION"},
      {"create table t(a int,foreign key(a) references u(a))", "FOREIGN KEY"},
      {"create table t(a time)", "TIME"},
      {"select cast(a as datetimeoffset(7)) from t", "DATETIMEOFFSET"},
      {"with c as (select 1 a) merge c using u on 1=1 when matched then delete;", "MERGE"},
      {"with xmlnamespaces('x' as y) select 1", "WITH XMLNAMESPACES"},
      {"again: select 1", "LABEL"},
      {"select a from t group by rollup(a)", "ROLLUP"},
      {"select a from t group by grouping sets((a),())", "GROUPING SETS"},
      {"create or alter view v as select 1 a", "CREATE OR ALTER"},
      {"begin tran x with mark 'y'", "WITH MARK"},
      {"select @@nestlevel", "@@NESTLEVEL"},
      {"select current_user", "CURRENT_USER"},
      {"exec sp_help", "EXEC"},
      {"grant select on t to public", "GRANT"},
      {"declare c cursor for select 1", "CURSOR"},
      {"declare @t table(a int)", "TABLE VARIABLE"},
      {"begin try select 1 end try begin catch end catch", "TRY...CATCH"},
      {"goto x", "GOTO"},
      {"use master", "USE"},
      {"waitfor delay '0:0:5'", "WAITFOR"},
      {"create procedure p as select 1", "CREATE PROCEDURE"},
      {"create trigger p on t for insert as select 1", "CREATE TRIGGER"},
      {"drop database d", "DROP DATABASE"},
      {"save tran a", "SAVE TRANSACTION"},
      {"select * from openquery(x,'y')", "OPENQUERY"},
      {"select * from t pivot (max(a) for b in ([1])) p", "PIVOT"},
      {"select * from t cross apply f(t.a)", "APPLY"},
      {"select row_number() over (order by a) from t", "OVER"},
      {"select a from t order by a offset 5 rows", "OFFSET"},
      {"select a from t for xml auto", "FOR"},
      {"select 1 where a='x' collate Chinese_PRC_BIN", "COLLATE"},
      {"select a collate Latin1_General_BIN from t", "COLLATE"},
      {"select top 5 with ties a from t order by a", "WITH TIES"},
      {"insert into t output inserted.a values(1)", "OUTPUT"},
      {"insert into t exec p", "EXEC"},
      {"select * into ##t from u", "GLOBAL TEMPORARY TABLE"},
      {"create table t(a int references u(a))", "REFERENCES"},
      {"create table t(a uniqueidentifier)", "UNIQUEIDENTIFIER"},
      {"create index i on t(a) include (b)", "INCLUDE"},
      {"set rowcount 5", "SET ROWCOUNT"},
      {"set ansi_nulls off", "SET ANSI_NULLS OFF"},
      {"select 1 where a > all (select 1)", "ALL"},
  };
  for (const auto& [batch, name] : cases) {
    EXPECT_EQ(TreeOf(batch), "error: '" + Text(name) + "' is not supported by an embedded account.") << batch;
  }
}

// What would need more stack than there is gets an error; what is long but flat is served.
TEST(Parser, RefusesEndlessNestingAndTakesLongLists) {
  constexpr std::string_view kTooDeep =
      "error: Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller "
      "queries.";
  const int deep = 20000;
  for (const Text& batch : {
           "select " + Repeat("(", deep) + "1" + Repeat(")", deep),
           "select " + Repeat("- ", deep) + "1",
           "select 1 where " + Repeat("not ", deep) + "1=1",
           "select " + Repeat("abs(", deep) + "1" + Repeat(")", deep),
           "select 1" + Repeat("+1", deep),
           "select " + Repeat("(", 60) + "1" + Repeat(Repeat("+1", 900) + ")", 60),
           "select * from " + Repeat("(", 60) + "a" + Repeat(Repeat(" cross join a", 900) + ")", 60),
           "select " + Repeat("(select ", 60) + "1" + Repeat(Repeat("*1", 900) + ")", 60),
           "select * from t where a in " + Repeat("(select a from t where a in ", deep),
           "select * from " + Repeat("(", deep) + "t",
           "select * from " + Repeat("(select * from ", deep) + "t",
           "select * from a" + Repeat(" cross join a", deep),
           Repeat("(", deep) + "select 1",
           Repeat("if 1=1 ", deep) + "select 1",
           "if 1=1 select 1" + Repeat(" else if 1=1 select 1", deep),
           Repeat("begin ", deep),
           Repeat("while 1=1 ", deep),
       }) {
    EXPECT_EQ(TreeOf(batch), kTooDeep) << batch.substr(0, 60);
  }
  EXPECT_EQ(Parse(Repeat("insert into t(a) values(1) ", deep)).statements.size(), static_cast<std::size_t>(deep));
  Parse("select 1 where a=1" + Repeat(" or a=1", deep));
  Parse("select 1 where a in (1" + Repeat(",1", deep * 5) + ")");
  const int chain = 1000;
  Parse("insert into t values(1)" + Repeat(",(1)", chain - 1));
  EXPECT_EQ(
      TreeOf("insert into t values(1)" + Repeat(",(1)", chain)),
      "error: The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 "
      "row values.");
  Parse("select 1" + Repeat("+(1)*2", chain));
  Parse("select 'a'" + Repeat("+'a'", chain));
  Parse("select 1" + Repeat(" union select 1", chain));
  Parse("select 1" + Repeat(" intersect select 1", chain));
  Parse("select * from a" + Repeat(" join a on 1=1", chain));
  Parse("select " + Repeat("(", 60) + "1" + Repeat("+1)", 60) + Repeat("+1", chain));
}

}  // namespace
}  // namespace rebate::tsql
