-- The first suppliers, goods and units of an account that was made without the sample. Every entity stands in the table
-- of its kind and as an item of its class.
insert into t_Supplier (FItemID, FNumber, FName, FRightUserID) values
  (801, 'S001', N'上海东方贸易有限公司', ',1,'),
  (802, 'S002', N'广州南方日化厂', ',1,')

insert into t_MeasureUnit (FItemID, FNumber, FName) values (1, 'PCS', N'件')
insert into t_ICItem (FItemID, FNumber, FName, FModel) values
  (401, 'G001', N'茉莉香皂', N'100克'),
  (402, 'G002', N'柔顺洗发露', N'400毫升'),
  (403, 'G003', N'薄荷牙膏', N'120克')
insert into t_ItemUnit (FSrcItemId, FItemID) values (401, 1), (402, 1), (403, 1)

insert into t_Item (FItemClassID, FItemID, FNumber, FName, FRightUserID)
select 8, FItemID, FNumber, FName, FRightUserID from t_Supplier
insert into t_Item (FItemClassID, FItemID, FNumber, FName)
select 4, FItemID, FNumber, FName from t_ICItem
GO
