-- The account: every table and view that the component's statements name. It stands up an embedded account and a
-- database on a server alike; a line GO ends a batch.

create table t_FL_SchemeMode (
  FRebateType int not null primary key,
  FRebateClass int,
  FTypeName nvarchar(255),
  FIndex int,
  FRangeItemClass int,
  FRebateTarget int,
  FIsPercent int,
  FSrcKeyWord nvarchar(255),
  FRebateKeyWord nvarchar(255)
)

-- FID is the number by which the form-based save finds the row again.
create table t_FL_SchemeList (
  FSchemeID int identity(1,1) not null primary key,
  FID as FSchemeID,
  FSchemeNo nvarchar(255),
  FSchemeName nvarchar(4000),
  FRebateType int,
  FModifyDate datetime,
  FCheckerID int,
  FNote nvarchar(4000),
  FEnable int default 0,
  FRebateMode int,
  FRebateCor nvarchar(4000)
)
create index IX_FL_SchemeList_Type on t_FL_SchemeList (FEnable, FRebateType)

create table t_FL_RebateRange (
  FID int identity(1,1) not null primary key,
  FSchemeID int,
  FClassTypeID int,
  FLowerLimit decimal(28,10),
  FUpperLimit decimal(28,10),
  FIndex int,
  FNote nvarchar(4000),
  FFlag int default 1
)
create index IX_FL_RebateRange_Scheme on t_FL_RebateRange (FSchemeID)
create index IX_FL_RebateRange_Type on t_FL_RebateRange (FClassTypeID, FSchemeID, FLowerLimit)

create table t_FL_RebateRule (
  FID int identity(1,1) not null primary key,
  FSchemeID int,
  FRowID int,
  FClassTypeID int,
  FItemID nvarchar(4000),
  FOrgID int,
  FAmtRangeID int,
  FRebateRate decimal(28,10),
  FIndex int,
  FNote nvarchar(4000),
  FUnitID int,
  FCheckItemID nvarchar(4000)
)
create index IX_FL_RebateRule_Scheme on t_FL_RebateRule (FSchemeID)
create index IX_FL_RebateRule_Type on t_FL_RebateRule (FClassTypeID, FOrgID)
create index IX_FL_RebateRule_Range on t_FL_RebateRule (FAmtRangeID)

create table t_FL_AllOrgs (
  FID int identity(1,1) not null primary key,
  FSchemeID int,
  FRowID int,
  FItemClassID int,
  FItemID int,
  FShowName nvarchar(4000)
)
create index IX_FL_AllOrgs_Scheme on t_FL_AllOrgs (FSchemeID, FItemClassID, FItemID)
create index IX_FL_AllOrgs_Item on t_FL_AllOrgs (FItemID, FItemClassID)

create table t_FL_AllItems (
  FID int identity(1,1) not null primary key,
  FSchemeID int,
  FRowID int,
  FItemID int,
  FUnitID int,
  FShowName nvarchar(4000),
  FRuleTableID int
)
create index IX_FL_AllItems_Scheme on t_FL_AllItems (FSchemeID)

create table t_FL_CheckItems (
  FSchemeID int,
  FRowID int,
  FItemClassID int,
  FItemID int
)
create index IX_FL_CheckItems_Scheme on t_FL_CheckItems (FSchemeID)

-- A row here forbids the deletion of its scheme.
create table t_FL_SchemeLink (
  FLinkID int identity(1,1) not null primary key,
  FSchemeID int,
  FBillNo nvarchar(255),
  FNote nvarchar(255)
)
create index IX_FL_SchemeLink_Scheme on t_FL_SchemeLink (FSchemeID)

create table t_ItemSelect (
  FClassTypeID int,
  FItemID int,
  FOrgID int,
  FStatus int,
  FSchemeID int
)
create index IX_ItemSelect_Type on t_ItemSelect (FClassTypeID, FItemID, FOrgID)
create index IX_ItemSelect_Scheme on t_ItemSelect (FSchemeID)
GO

create table t_ItemClass (
  FItemClassID int not null primary key,
  FName nvarchar(255)
)

create table t_Item (
  FItemClassID int not null,
  FItemID int not null,
  FNumber nvarchar(255),
  FName nvarchar(255),
  FRightUserID nvarchar(255),
  constraint PK_Item primary key (FItemClassID, FItemID)
)
create index IX_Item_Item on t_Item (FItemID)
create index IX_Item_Number on t_Item (FNumber, FItemClassID)

create table t_Supplier (
  FItemID int not null primary key,
  FNumber nvarchar(255),
  FName nvarchar(255),
  FDeleted int default 0,
  FRightUserID nvarchar(255)
)
create index IX_Supplier_Number on t_Supplier (FNumber)

create table t_Organization (
  FItemID int not null primary key,
  FNumber nvarchar(255),
  FName nvarchar(255),
  FDeleted int default 0,
  FRightUserID nvarchar(255)
)
create index IX_Organization_Number on t_Organization (FNumber)

create table t_Emp (
  FItemID int not null primary key,
  FNumber nvarchar(255),
  FName nvarchar(255),
  FDeleted int default 0,
  FRightUserID nvarchar(255)
)
create index IX_Emp_Number on t_Emp (FNumber)

create table t_ICItem (
  FItemID int not null primary key,
  FNumber nvarchar(255),
  FName nvarchar(255),
  FModel nvarchar(255),
  FDeleted int default 0
)
create index IX_ICItem_Number on t_ICItem (FNumber)

create table t_MeasureUnit (
  FItemID int not null primary key,
  FNumber nvarchar(255),
  FName nvarchar(255)
)

create table t_ItemUnit (
  FSrcItemId int not null,
  FItemID int not null,
  constraint PK_ItemUnit primary key (FSrcItemId, FItemID)
)

create table t_User (
  FUserID int not null primary key,
  FName nvarchar(255)
)
GO

-- One row for each concrete organisation of a stored scheme; a row for a whole class gives all its items.
create view VW_FL_SchemeOrg as
select o.FSchemeID, o.FItemClassID, o.FItemID, o.FItemID as FItemIDNew, i.FNumber
from t_FL_AllOrgs o
left join t_Item i on i.FItemClassID = o.FItemClassID and i.FItemID = o.FItemID
where o.FItemID <> 0
union all
select o.FSchemeID, o.FItemClassID, o.FItemID, i.FItemID, i.FNumber
from t_FL_AllOrgs o
inner join t_Item i on i.FItemClassID = o.FItemClassID
where o.FItemID = 0
GO

-- The units in which each goods item can be counted. It reads one table, so that a join to it from the left can still
-- be narrowed by the goods item.
create view vw_Unit as
select p.FSrcItemId, p.FItemID,
  (select u.FNumber from t_MeasureUnit u where u.FItemID = p.FItemID) as FNumber,
  (select u.FName from t_MeasureUnit u where u.FItemID = p.FItemID) as FName
from t_ItemUnit p
GO

-- FRebateTarget: 1 money, 2 goods. The key words name the figure that a rebate is counted from, and what it gives.
insert into t_FL_SchemeMode
  (FRebateType, FRebateClass, FIndex, FRangeItemClass, FTypeName, FRebateTarget, FIsPercent, FSrcKeyWord, FRebateKeyWord)
values
  (2040, 24, 1, 8, N'按供应商采购总金额返采购额的X%', 1, 1, 'FAmount', 'FAmount'),
  (2041, 24, 2, 4, N'按商品采购金额返采购额的X%', 1, 1, 'FAmount', 'FAmount'),
  (2042, 24, 3, 4, N'按商品采购金额返X元', 1, 0, 'FAmount', 'FAmount'),
  (2043, 24, 4, 4, N'按商品采购数量返X数量的商品', 2, 0, 'FQty', 'FQty'),
  (2044, 24, 5, 4, N'按商品采购数量返X元', 1, 0, 'FQty', 'FAmount'),
  (2045, 24, 6, 4, N'按商品采购数量每单位商品返X元', 1, 0, 'FQty', 'FPrice'),
  (2046, 24, 7, 8, N'按供应商采购总金额返X元', 1, 0, 'FAmount', 'FAmount'),
  (3020, 32, 1, 1, N'按客户销售总金额返销售额的X%', 1, 1, 'FAmount', 'FAmount'),
  (3021, 32, 2, 4, N'按商品销售金额返销售额的X%', 1, 1, 'FAmount', 'FAmount'),
  (3022, 32, 3, 4, N'按商品销售金额返X元', 1, 0, 'FAmount', 'FAmount'),
  (3023, 32, 4, 4, N'按商品销售数量返X数量的商品', 2, 0, 'FQty', 'FQty'),
  (3024, 32, 5, 4, N'按商品销售数量返X元', 1, 0, 'FQty', 'FAmount'),
  (3025, 32, 6, 4, N'按商品销售数量每单位商品返X元', 1, 0, 'FQty', 'FPrice'),
  (3026, 32, 7, 1, N'按客户销售总金额返X元', 1, 0, 'FAmount', 'FAmount'),
  (4020, 40, 1, 1, N'业务员--总额', 1, 1, 'FAmount', 'FAmount'),
  (4021, 40, 2, 4, N'业务员--商品', 1, 1, 'FAmount', 'FAmount')
GO
