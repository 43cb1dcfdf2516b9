-- The table of a station: Orvane.dll is a SQLite file that holds it. CreateDate is text that sorts
-- by time, as in 2024-03-01 08:30:00.
create table T_BatchInfo (
  BatchID     text not null primary key,
  BatchState  text,
  CreateDate  text,
  PaperNum    integer,
  ScanUser    text,
  ScanStation text,
  Remark      text
);
-- Finds the next batch at once, however many rows there are.
create index IX_BatchInfo_State on T_BatchInfo (BatchState, CreateDate);
