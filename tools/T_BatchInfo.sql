-- The table of a station, in the SQLite file Orvane.dll. CreateDate is a text that sorts by time,
-- for example 2024-03-01 08:30:00.
create table T_BatchInfo (
  BatchID     text not null primary key,
  BatchState  text,
  CreateDate  text,
  PaperNum    integer,
  ScanUser    text,
  ScanStation text,
  Remark      text
);
-- Finds the next batch without scanning the table.
create index IX_BatchInfo_State on T_BatchInfo (BatchState, CreateDate);
