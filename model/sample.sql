-- A small shop: suppliers, customers, employees, goods with their units, and users with their data rights.

insert into t_ItemClass (FItemClassID, FName) values
  (1, N'客户'),
  (3, N'职员'),
  (4, N'商品'),
  (8, N'供应商')

insert into t_User (FUserID, FName) values
  (1, N'Administrator'),
  (1001, N'采购主管'),
  (1002, N'销售主管'),
  (1003, N'财务')

insert into t_Supplier (FItemID, FNumber, FName, FRightUserID, FDeleted) values
  (801, 'S001', N'上海东方贸易有限公司', ',1,1001,', 0),
  (802, 'S002', N'广州南方日化厂', ',1,1001,1002,', 0),
  (803, 'S003', N'杭州清源饮品有限公司', ',1,1002,', 0),
  (804, 'S004', N'青岛海岸食品有限公司', ',1,1001,1003,', 0),
  (805, 'S005', N'成都天府粮油有限公司', ',1,1003,', 0),
  (806, 'S006', N'北京华北纸业集团', ',1,1001,1002,1003,', 0),
  (807, 'S007', N'武汉江城文具厂', ',1,1002,', 0),
  (808, 'S008', N'厦门旧港进出口行（停用）', ',1,1001,', 1)

insert into t_Organization (FItemID, FNumber, FName, FRightUserID, FDeleted) values
  (101, 'C001', N'人民路便利店', ',1,1001,', 0),
  (102, 'C002', N'百联超市中山店', ',1,1001,1002,', 0),
  (103, 'C003', N'家家福连锁总店', ',1,1002,', 0),
  (104, 'C004', N'新华大酒店', ',1,1003,', 0),
  (105, 'C005', N'阳光幼儿园', ',1,1001,1003,', 0),
  (106, 'C006', N'实验中学小卖部', ',1,1002,1003,', 0),
  (107, 'C007', N'城南批发部', ',1,1001,1002,1003,', 0),
  (108, 'C008', N'老街杂货铺（停业）', ',1,1001,', 1)

insert into t_Emp (FItemID, FNumber, FName, FRightUserID) values
  (301, 'E001', N'张伟', ',1,1001,'),
  (302, 'E002', N'李娜', ',1,1002,'),
  (303, 'E003', N'王芳', ',1,1001,1002,'),
  (304, 'E004', N'陈强', ',1,1003,')

insert into t_MeasureUnit (FItemID, FNumber, FName) values
  (1, 'PCS', N'件'),
  (2, 'BOX', N'箱'),
  (3, 'BTL', N'瓶'),
  (4, 'CASE', N'箱（24瓶）'),
  (5, 'BAG', N'袋'),
  (6, 'CTN', N'箱（20袋）'),
  (7, 'SACK', N'包'),
  (8, 'TON', N'吨'),
  (9, 'PEN', N'支'),
  (10, 'DZ', N'打')

insert into t_ICItem (FItemID, FNumber, FName, FModel, FDeleted) values
  (401, 'G001', N'茉莉香皂', N'100克', 0),
  (402, 'G002', N'柔顺洗发露', N'400毫升', 0),
  (403, 'G003', N'薄荷牙膏', N'120克', 0),
  (404, 'G004', N'清源纯净水', N'550毫升', 0),
  (405, 'G005', N'冰红茶', N'500毫升', 0),
  (406, 'G006', N'苏打饼干', N'400克', 0),
  (407, 'G007', N'海苔卷', N'60克', 0),
  (408, 'G008', N'东北大米', N'10千克', 0),
  (409, 'G009', N'压榨花生油', N'5升', 0),
  (410, 'G010', N'抽取式面纸', N'200抽', 0),
  (411, 'G011', N'中性笔', N'0.5毫米 黑', 0),
  (412, 'G012', N'旧款橡皮', N'小号', 1)

insert into t_ItemUnit (FSrcItemId, FItemID) values
  (401, 1), (401, 2), (402, 1), (402, 2), (403, 1), (403, 2), (404, 3), (404, 4),
  (405, 3), (405, 4), (406, 5), (406, 6), (407, 5), (407, 6), (408, 7), (408, 8),
  (409, 3), (409, 4), (410, 5), (410, 6), (411, 9), (411, 10), (412, 9), (412, 10)

GO

-- Every entity is an item of its class, too.
insert into t_Item (FItemClassID, FItemID, FNumber, FName, FRightUserID)
select 8, FItemID, FNumber, FName, FRightUserID from t_Supplier
insert into t_Item (FItemClassID, FItemID, FNumber, FName, FRightUserID)
select 1, FItemID, FNumber, FName, FRightUserID from t_Organization
insert into t_Item (FItemClassID, FItemID, FNumber, FName, FRightUserID)
select 3, FItemID, FNumber, FName, FRightUserID from t_Emp
insert into t_Item (FItemClassID, FItemID, FNumber, FName)
select 4, FItemID, FNumber, FName from t_ICItem
GO
