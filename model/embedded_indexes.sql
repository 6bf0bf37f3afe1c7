-- Indexes that an account in a file has beside those of schema.sql. A server takes keys of 1,700 bytes at most, and would
-- refuse the rows whose names are longer.

create index IX_FL_SchemeList_Name on t_FL_SchemeList (FSchemeName)
GO
